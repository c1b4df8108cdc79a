#include "inspect/export/questions.h"

#include <array>

namespace orvlog::inspect
{

namespace
{

// Sums and rounding are over whole numbers, and every row has its place in the order, so that all engines give the
// same.
constexpr std::array kQuestions = {
    Question{"unknown-operators", "jobs with an operator that nobody knows, and how often",
             "SELECT job, type, operation, count(*) AS times, min(call) AS first_call\n"
             "FROM operators WHERE known = 0\n"
             "GROUP BY job, type, operation\n"
             "ORDER BY job, type, operation"},
    Question{"fine-images", "images with more than 600 pixels to the inch of their page",
             "SELECT job, call, id, width, height, round(dpi_x) AS across, round(dpi_y) AS down\n"
             "FROM images WHERE dpi_x > 600 OR dpi_y > 600\n"
             "ORDER BY job, call, item"},
    Question{"fonts", "the fonts of each job, with their sizes and how often they are used",
             "SELECT job, engine_name, font, count(*) AS texts, round(min(size)) AS smallest, round(max(size)) AS "
             "largest\n"
             "FROM fonts\n"
             "GROUP BY job, engine_name, font\n"
             "ORDER BY job, engine_name, font"},
    Question{"heavy-kinds", "which kinds of calls take the most bytes of logs",
             "SELECT kind, count(*) AS times, sum(bytes) AS all_bytes, max(bytes) AS largest\n"
             "FROM calls\n"
             "GROUP BY kind\n"
             "ORDER BY all_bytes DESC, kind"},
    Question{"shut-pages", "pages on which the clips shut everything out",
             "SELECT job, page, count(*) AS paints\n"
             "FROM calls WHERE page IS NOT NULL AND shut IS NOT NULL\n"
             "GROUP BY job, page\n"
             "HAVING sum(shut) = count(*)\n"
             "ORDER BY job, page"},
    Question{"tickets", "which colour tickets are in use, in how many jobs and how often",
             "SELECT family, hash, count(DISTINCT job) AS jobs, count(*) AS times\n"
             "FROM tickets\n"
             "GROUP BY family, hash\n"
             "ORDER BY times DESC, family, hash"},
    Question{"warnings", "the logger's warnings by the version of what wrote the log",
             "SELECT content_version, orv_version, text, count(*) AS times, count(DISTINCT job) AS jobs\n"
             "FROM warnings INNER JOIN (SELECT job, content_version, orv_version FROM jobs) AS versions USING (job)\n"
             "GROUP BY content_version, orv_version, text\n"
             "ORDER BY times DESC, content_version, orv_version, text"},
    Question{"shared-images", "images that more than one job has",
             "SELECT data_hash, min(width) AS pixels_across, min(height) AS pixels_down, count(DISTINCT job) AS jobs, "
             "count(*) AS times\n"
             "FROM images WHERE data_hash IS NOT NULL\n"
             "GROUP BY data_hash\n"
             "HAVING count(DISTINCT job) > 1\n"
             "ORDER BY jobs DESC, data_hash"},
    Question{"damaged-jobs", "jobs whose log is cut short or damaged, with their last call",
             "SELECT job, name, state, calls, text_bytes\n"
             "FROM jobs WHERE state <> 'whole'\n"
             "ORDER BY job"},
    Question{"repeated-paths", "outlines that are drawn over and over, which a resource might hold",
             "SELECT hash, max(segments) AS size, count(DISTINCT job) AS jobs, count(*) AS times\n"
             "FROM paths WHERE segments > 0\n"
             "GROUP BY hash\n"
             "HAVING count(*) >= 10\n"
             "ORDER BY times DESC, hash"},
};

}  // namespace

std::span<const Question> questions()
{
    return kQuestions;
}

}  // namespace orvlog::inspect
