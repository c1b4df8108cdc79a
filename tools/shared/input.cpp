#include "tools/shared/input.h"

#include "clients/system/system.h"
#include "holv-core/gio/gio-http-client.h"
#include "holv-core/gio/gio-url-stream.h"
#include "holv-core/gio/gio-url.h"
#include "tools/shared/left-out.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace orvlog::tool
{

namespace
{

constexpr size_t kPiece = 65536;

struct CloseFile
{
    void operator()(std::FILE* file) const
    {
        if (file != stdin)
            std::fclose(file);
    }
};

struct CloseStream
{
    void operator()(GIO_Stream* stream) const
    {
        stream->ops->gio_Close(stream->instance);
    }
};

GMM_Allocator heap()
{
    GMM_Allocator allocator = {};
    allocator.gmm_Alloc = [](GMM_Allocator*, uint64_t size, uint32_t) { return std::malloc(size); };
    allocator.gmm_Free = [](GMM_Allocator*, void* block) { std::free(block); };
    return allocator;
}

bool read_file(const std::string& path, std::vector<uint8_t>* bytes, std::string* why)
{
    const std::unique_ptr<std::FILE, CloseFile> file(path == "-" ? stdin : std::fopen(path.c_str(), "rb"));
    uint8_t piece[kPiece];
    size_t got = 0;
    while (file != nullptr && (got = std::fread(piece, 1, sizeof piece, file.get())) != 0)
        bytes->insert(bytes->end(), piece, piece + got);
    const bool whole = file != nullptr && std::ferror(file.get()) == 0;
    if (!whole)
        *why = std::strerror(errno);
    return whole;
}

const char* reason(int32_t code)
{
    switch (code)
    {
    case GIO_ERR_BAD_NAME:
        return "malformed URL";
    case GIO_ERR_NO_MEMORY:
        return "out of memory";
    case GIO_ERR_PLATFORM:
        return "the server does not give it";
    default:
        return "can't be opened";
    }
}

bool read_http(const std::string& url, std::vector<uint8_t>* bytes, std::string* why)
{
    if (ORVLOG_HAS_HTTP == 0)
    {
        *why = text_of_left_out("libcurl", "a name that begins with http:");
        return false;
    }
    static bool installed = false;
    if (!installed)
        gio_InstallHttpClient();
    installed = true;
    static GMM_Allocator allocator = heap();
    GIO_Stream* opened = nullptr;
    const int32_t code = gio_OpenUrlOrPath(url.c_str(), GIO_PATH_URL, nullptr, GIO_PATH_URL, &allocator, &opened);
    if (code != GIO_OK)
    {
        *why = reason(code);
        return false;
    }
    const std::unique_ptr<GIO_Stream, CloseStream> stream(opened);
    uint8_t piece[kPiece];
    uint64_t got = 0;
    while ((got = stream->ops->gio_Read(piece, 1, sizeof piece, stream->instance)) != 0)
        bytes->insert(bytes->end(), piece, piece + got);
    const bool whole = stream->ops->gio_Error(stream->instance) == 0;
    if (!whole)
        *why = "the server broke off";
    return whole;
}

// The path of a "file:" URL of this machine; the separators of local names are this system's.
bool path_of(const std::string& url, std::string* path)
{
    GIO_UrlParts parts;
    if (gio_ParseUrl(url.c_str(), &parts) != 0 || parts.query.text != nullptr || parts.fragment.text != nullptr)
        return false;
    const std::string authority(parts.authority.text != nullptr ? parts.authority.text : "", parts.authority.length);
    path->resize(parts.path.length);
    const int64_t length =
        gio_NormalisePart(&parts.path, GIO_CLASS_PATH, GIO_PATH_URL, GIO_NORMALISE_DECODE, path->data());
    path->resize(length > 0 ? static_cast<size_t>(length) : 0);
    return length > 0 && (authority.empty() || authority == "localhost");
}

}  // namespace

bool is_url(const std::string& name)
{
    return name.rfind("http:", 0) == 0 || name.rfind("file:", 0) == 0;
}

bool read_input(const std::string& name, std::vector<uint8_t>* bytes, std::string* why)
{
    GIO_UrlParts parts;
    const bool is_url = gio_ParseUrl((name.substr(0, name.find(':')) + ":a").c_str(), &parts) == 0;
    const uint32_t scheme = is_url && name.find(':') != std::string::npos ? parts.scheme_kind : 0;
    if (scheme == GIO_SCHEME_HTTP)
        return read_http(name, bytes, why);
    if (scheme != GIO_SCHEME_FILE)
        return read_file(name, bytes, why);
    std::string path;
    if (path_of(name, &path))
        return read_file(system::path_of_url(path), bytes, why);
    *why = reason(GIO_ERR_BAD_NAME);
    return false;
}

}  // namespace orvlog::tool
