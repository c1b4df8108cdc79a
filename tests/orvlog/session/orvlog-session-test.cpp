// The records of a session, field by field, and what it finds of what is open.

#include "orvlog/session/orvlog-session.h"

#include "holv-core/gio/gio-file.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/session/orvlog-frames.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace
{

using namespace orvlog::test;

struct Field
{
    const char* name;
    size_t offset;
    size_t size;
};

#define FIELD(record, field, width)                                                                                    \
    Field                                                                                                              \
    {                                                                                                                  \
#field, offsetof(record, field), sizeof(record::field) == (width) ? (width) : 0                                \
    }

// Each field stands directly behind the one before, but for what its alignment asks for, and is as wide as told.
void expect_order(const std::vector<Field>& fields)
{
    size_t end = 0;
    for (const Field& field : fields)
    {
        EXPECT_NE(field.size, 0U) << field.name << " has another width";
        EXPECT_GE(field.offset, end) << field.name;
        EXPECT_LT(field.offset, end + 8) << field.name << " has something ahead of it";
        end = field.offset + field.size;
    }
}

TEST(SessionRecord, FieldsStandInTheirOrder)
{
    using Record = ORVLOG_Session;
    EXPECT_EQ(offsetof(Record, identity_object), 0U);
    expect_order({
        FIELD(Record, identity_object, 8),
        FIELD(Record, allocator, 8),
        FIELD(Record, next_font_wrapper_id, 4),
        FIELD(Record, next_resource_id, 4),
        FIELD(Record, ticket_functions, 8),
        FIELD(Record, ticket_serial_functions, 8),
        FIELD(Record, third_client_table, 8),
        FIELD(Record, current_font_wrapper, 8),
        FIELD(Record, glyph_fixed_format, 4),
        FIELD(Record, glyph_get_format, 4),
        FIELD(Record, object_transform, 48),
        FIELD(Record, drawing_transform, 48),
        FIELD(Record, document_handle, 8),
        FIELD(Record, second_interface, 8),
        FIELD(Record, second_document_handle, 8),
        FIELD(Record, second_drawing_table, 128),
        FIELD(Record, next_drawing_context, 4),
        FIELD(Record, colour_frames, 8),
        FIELD(Record, logged_tickets, 8),
        FIELD(Record, side_allocator, 8),
        FIELD(Record, next_object_id, 4),
        FIELD(Record, object_type, 4),
        FIELD(Record, object_scratch, 8),
        FIELD(Record, next_font_spec_id, 4),
        FIELD(Record, next_string_desc_id, 4),
        FIELD(Record, glyph_warned_index_get, 4),
        FIELD(Record, glyph_warned_fixed_fbe, 4),
        FIELD(Record, glyph_warned_fixed_bitmap, 4),
        FIELD(Record, glyph_warned_fixed_path, 4),
        FIELD(Record, glyph_warned_glyph_get, 4),
        FIELD(Record, glyph_end_point, 16),
        FIELD(Record, resource_map, 8),
        FIELD(Record, identity_pointer, 8),
        FIELD(Record, group_depth, 2),
        FIELD(Record, logging_mode, 4),
        FIELD(Record, next_document_context, 4),
        FIELD(Record, image.image_logging_mode, 4),
        FIELD(Record, image.image_dump_flag, 4),
        FIELD(Record, image.has_file_prefix, 4),
        FIELD(Record, image.file_prefix, 1000),
        FIELD(Record, image_sequence, 8),
        FIELD(Record, writer, sizeof(ORVLOG_Writer)),
        FIELD(Record, session_id, 16),
        FIELD(Record, merge_pending, 4),
        FIELD(Record, merge_file_name, 48),
        FIELD(Record, merge_source_stream, 8),
        FIELD(Record, merge_target_stream, 8),
        FIELD(Record, merge_compress, 4),
        FIELD(Record, merge_mode, 4),
    });
}

TEST(SessionRecord, WriterFieldsStandInTheirOrder)
{
    expect_order({
        FIELD(ORVLOG_Writer, stream, 8),
        FIELD(ORVLOG_Writer, depth, 4),
        FIELD(ORVLOG_Writer, warnings, 8),
        FIELD(ORVLOG_Writer, element_open, 4),
        FIELD(ORVLOG_Writer, allocator, 8),
        FIELD(ORVLOG_Writer, compress, 4),
        FIELD(ORVLOG_Writer, coder, 8),
    });
    EXPECT_EQ(sizeof(ORVLOG_Writer), 56U);
    expect_order({FIELD(ORVLOG_Warning, next, 8), FIELD(ORVLOG_Warning, text, 8)});
}

TEST(SessionRecord, FieldsOfDocumentsAndDrawingsStandInTheirOrder)
{
    expect_order({
        FIELD(ORVLOG_DocumentContext, session, 8),
        FIELD(ORVLOG_DocumentContext, font_wrapper, 8),
        FIELD(ORVLOG_DocumentContext, document_context, 4),
    });
    expect_order({
        FIELD(ORVLOG_DrawingContext, session, 8),
        FIELD(ORVLOG_DrawingContext, font_wrapper, 8),
        FIELD(ORVLOG_DrawingContext, base_transform, 48),
        FIELD(ORVLOG_DrawingContext, drawing_context, 4),
        FIELD(ORVLOG_DrawingContext, kind, 4),
        FIELD(ORVLOG_DrawingContext, renderer_table, 128),
        FIELD(ORVLOG_DrawingContext, saved_font_wrapper, 8),
        FIELD(ORVLOG_DrawingContext, group_frames, 8),
        FIELD(ORVLOG_DrawingContext, error_context, 8),
    });
    expect_order({
        FIELD(ORVLOG_ResourceMapEntry, next, 8),
        FIELD(ORVLOG_ResourceMapEntry, resource_id, 4),
        FIELD(ORVLOG_ResourceMapEntry, renderer_resource_id, 4),
    });
}

TEST(SessionRecord, FieldsOfFramesAndWrappersStandInTheirOrder)
{
    expect_order({
        FIELD(ORVLOG_GroupFrame, next, 8),
        FIELD(ORVLOG_GroupFrame, saved_font_wrapper, 8),
        FIELD(ORVLOG_GroupFrame, group_transform, 48),
        FIELD(ORVLOG_GroupFrame, replaced_operand, 8),
        FIELD(ORVLOG_GroupFrame, owns_font_wrapper, 4),
        FIELD(ORVLOG_GroupFrame, operand_kept, 4),
    });
    expect_order({
        FIELD(ORVLOG_ColourFrame, next, 8),
        FIELD(ORVLOG_ColourFrame, ticket, 8),
        FIELD(ORVLOG_ColourFrame, ticket_space, 20),
        FIELD(ORVLOG_ColourFrame, ticket_render, 16),
        FIELD(ORVLOG_ColourFrame, retained, 4),
    });
    expect_order({
        FIELD(FontEngineWrapper, session, 8),
        FIELD(FontEngineWrapper, GfpId, 4),
        FIELD(FontEngineWrapper, allocator, 8),
        FIELD(FontEngineWrapper, inner_table, 8),
        FIELD(FontEngineWrapper, wrapped_table, 8),
    });
}

TEST(SessionRecord, FindsWhatIsOpenAndNothingElse)
{
    TestSession test;
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface foreign = {};
    int other = 0;
    test.start_document();
    test.start_face(&face);
    const auto* session = static_cast<const ORVLOG_Session*>(test.session());
    EXPECT_EQ(orvlog_find_document(session, test.document), test.document);
    EXPECT_EQ(orvlog_find_document(session, &other), nullptr);
    EXPECT_EQ(orvlog_find_document(session, nullptr), nullptr);
    EXPECT_EQ(orvlog_find_drawing(session, &face), face.object_paint.context);
    foreign.object_paint.context = &other;
    EXPECT_EQ(orvlog_find_drawing(session, &foreign), nullptr);
    foreign.object_paint.context = nullptr;
    EXPECT_EQ(orvlog_find_drawing(session, &foreign), nullptr);
    EXPECT_EQ(orvlog_find_drawing(session, nullptr), nullptr);
    face.drawing_finish.fn(&face);
    EXPECT_EQ(orvlog_find_drawing(session, &face), nullptr);
    test.finish_document();
    EXPECT_EQ(orvlog_find_document(session, test.document), nullptr);
}

TEST(SessionRecord, StandaloneOneWritesToTheStandardOutput)
{
    ORVLOG_Session* session = orvlog_standalone_session();
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(orvlog_standalone_session(), session);
    EXPECT_EQ(session->writer.stream, gio_stdout());
    EXPECT_EQ(session->writer.allocator, nullptr);
    EXPECT_EQ(session->writer.depth, 0U);
    EXPECT_EQ(session->writer.compress, 0U);
    EXPECT_EQ(session->writer.coder, nullptr);
    EXPECT_EQ(session->logging_mode, 0U);
    EXPECT_EQ(session->image.image_logging_mode, 0U);
}

}  // namespace
