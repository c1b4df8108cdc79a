#include "orvlog/session/orvlog-creators.h"

#include "holv-core/gio/gio-file.h"
#include "orvlog/session/orvlog-session.h"
#include "tests/support/failure-sweep.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <string>

namespace
{

using namespace orvlog::test;

constexpr char kRoot[] =
    "<ORV MIRDA_TOLMA_VERSION=\"10034\" ORV_VERSION=\"10066\" TPN_VERSION=\"10061\" TRN_VERSION=\"10010\" "
    "HOLV_VERSION=\"10055\" GAM_VERSION=\"10044\" GBT_VERSION=\"10003\" GCA_VERSION=\"10003\" GCD_VERSION=\"10044\" "
    "GCM_VERSION=\"10099\" GER_VERSION=\"10017\" GFI_VERSION=\"10053\" GFX_VERSION=\"10024\" GGO_VERSION=\"10021\" "
    "GHT_VERSION=\"10003\" GIO_VERSION=\"10028\" GME_VERSION=\"10028\" GMM_VERSION=\"10031\" GNC_VERSION=\"10024\" "
    "GOP_VERSION=\"10090\" GOS_VERSION=\"10052\" GPA_VERSION=\"10057\" GSH_VERSION=\"10043\" GUT_VERSION=\"10003\" "
    "Endian=\"little\" LoggingMode=\"transparent\" GlyphLoggingMode=\"transparent\" ORVLOG_CONTENT_VERSION=\"2\">\n";

ORVLOG_Session* session_of(TestSession& test)
{
    return static_cast<ORVLOG_Session*>(test.session());
}

TEST(Session, WithoutCallsIsTheRootAndItsClosingTag)
{
    TestSession test;
    EXPECT_NE(test.initialised, 0U);
    EXPECT_EQ(test.shut_down(), 1U);
    EXPECT_EQ(test.stream.text(), std::string(kRoot) + "</ORV>\n");
    EXPECT_EQ(test.allocator.outstanding(), 0U);
    EXPECT_FALSE(test.stream.closed());
}

TEST(Session, RootIsFlushedAfterEachAttribute)
{
    TestSession test;
    EXPECT_EQ(test.stream.unflushed(), 0U);
    // The name, 24 versions, four more attributes, and the bracket.
    EXPECT_EQ(test.stream.flush_marks().size(), 30U);
}

TEST(Session, TableHoldsTheSessionInSixContexts)
{
    TestSession test;
    EXPECT_EQ(test.orv.base.renderer, test.renderer.get());
    EXPECT_EQ(test.orv.base.reserved, 0U);
    void* session = test.session();
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(test.orv.document_finish.context, session);
    EXPECT_EQ(test.orv.resource_destroy.context, session);
    EXPECT_EQ(test.orv.face_start.context, session);
    EXPECT_EQ(test.orv.resource_start.context, session);
    EXPECT_EQ(test.orv.memory_context_start.context, session);
    EXPECT_NE(test.orv.document_start.fn, test.renderer.get()->document_start.fn);
}

TEST(Session, SecondWordOfTheFirstEntryBecomesZero)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    renderer.table()->base.reserved = 9;
    ORV_Interface orv;
    ASSERT_NE(ORVLOG_DLL_initialise(&orv, renderer.get(), allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, nullptr, nullptr),
              0U);
    EXPECT_EQ(orv.base.reserved, 0U);
    ORVLOG_DLL_shutdown(orv.face_start.context);
}

TEST(Session, NoInterfaceOutGivesZero)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    EXPECT_EQ(ORVLOG_DLL_initialise(nullptr, nullptr, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, nullptr, nullptr),
              0U);
    EXPECT_EQ(allocator.requests(), 0U);
    EXPECT_EQ(stream.text(), "");
}

TEST(Session, RefusedAllocationGivesZero)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv;
    allocator.refuse(1);
    EXPECT_EQ(ORVLOG_DLL_initialise(&orv, nullptr, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, nullptr, nullptr),
              0U);
    EXPECT_EQ(identity.asked(), 0U);
    EXPECT_EQ(stream.text(), "");
}

TEST(Session, RefusedIdentityFreesTheSessionAndLeavesTheCopiedTable)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    identity.refuse();
    ORV_Interface orv = {};
    EXPECT_EQ(ORVLOG_DLL_initialise(&orv, renderer.get(), allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, nullptr, nullptr),
              0U);
    EXPECT_EQ(allocator.requests(), 1U);
    EXPECT_EQ(allocator.outstanding(), 0U);
    EXPECT_EQ(stream.text(), "");
    EXPECT_EQ(orv.document_start.fn, renderer.get()->document_start.fn);
    EXPECT_EQ(orv.memory_context_start.context, renderer.get()->memory_context_start.context);
}

TEST(Session, MissingNeedsAreRefused)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv;
    const auto initialise = [&](GMM_Allocator* memory, const ORVLOG_IdentitySource* source)
    {
        return ORVLOG_DLL_initialise(&orv, nullptr, memory, source, 0, stream.get(), nullptr, 0, nullptr, nullptr, 0,
                                     nullptr, nullptr);
    };
    EXPECT_EQ(initialise(nullptr, identity.get()), 0U);
    EXPECT_EQ(initialise(allocator.get(), nullptr), 0U);
    const ORVLOG_IdentitySource no_object = {nullptr};
    EXPECT_EQ(initialise(allocator.get(), &no_object), 0U);
    ORVLOG_IdentityObject no_table = {nullptr};
    const ORVLOG_IdentitySource no_functions = {&no_table};
    EXPECT_EQ(initialise(allocator.get(), &no_functions), 0U);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(Session, AnAllocatorWithoutItsOperationsIsRefused)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv;
    const auto initialise = [&](GMM_Allocator* memory)
    {
        return ORVLOG_DLL_initialise(&orv, nullptr, memory, identity.get(), 0, stream.get(), nullptr, 0, nullptr,
                                     nullptr, 0, nullptr, nullptr);
    };
    GMM_Allocator record = *allocator.get();
    record.gmm_Alloc = nullptr;
    EXPECT_EQ(initialise(&record), 0U);
    record = *allocator.get();
    record.gmm_Free = nullptr;
    EXPECT_EQ(initialise(&record), 0U);
    record = *allocator.get();
    record.gmm_Realloc = nullptr;
    EXPECT_EQ(initialise(&record), 0U);
    EXPECT_EQ(stream.text(), "");
    EXPECT_EQ(allocator.requests(), 0U);
}

TEST(Session, NoStreamStillForwards)
{
    TestAllocator allocator;
    FakeIdentity identity;
    FakeRenderer renderer;
    ORV_Interface orv;
    ASSERT_NE(ORVLOG_DLL_initialise(&orv, renderer.get(), allocator.get(), identity.get(), 0, nullptr, nullptr, 0,
                                    nullptr, nullptr, 0, nullptr, nullptr),
              0U);
    void* document = nullptr;
    EXPECT_EQ(orv.document_start.fn(nullptr, &orv, &document, 1, nullptr, nullptr), 1U);
    EXPECT_EQ(orv.document_finish.fn(&orv, document), 1U);
    EXPECT_EQ(renderer.calls().size(), 2U);
    EXPECT_EQ(ORVLOG_DLL_shutdown(orv.document_start.context), 1U);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(Session, StoresItsIdentityAndTables)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv;
    ORVLOG_TicketFunctions tickets = {};
    ORVLOG_TicketSerialFunctions serial = {};
    ASSERT_NE(ORVLOG_DLL_initialise(&orv, nullptr, allocator.get(), identity.get(), 1, stream.get(), nullptr, 2,
                                    &tickets, &serial, 3, nullptr, nullptr),
              0U);
    const auto* session = static_cast<ORVLOG_Session*>(orv.document_start.context);
    EXPECT_EQ(identity.asked(), 1U);
    for (uint8_t i = 0; i < 16; ++i)
        EXPECT_EQ(session->session_id[i], i);
    EXPECT_EQ(session->ticket_functions, &tickets);
    EXPECT_EQ(session->ticket_serial_functions, &serial);
    EXPECT_EQ(session->third_client_table, nullptr);
    EXPECT_EQ(session->identity_pointer, identity.get());
    EXPECT_EQ(session->identity_object, identity.get()->object);
    EXPECT_EQ(session->allocator, allocator.get());
    EXPECT_EQ(session->side_allocator, allocator.get());
    EXPECT_EQ(session->logging_mode, 0U);
    EXPECT_EQ(session->image.has_file_prefix, 0U);
    EXPECT_EQ(session->glyph_get_format, 0U);
    ORVLOG_DLL_shutdown(orv.document_start.context);
}

TEST(Session, FilePrefixKeeps999Bytes)
{
    for (const size_t length : {size_t{0}, size_t{998}, size_t{999}, size_t{1000}, size_t{5000}})
    {
        const std::string prefix(length, 'p');
        TestSession test(Behind::kNothing, prefix.c_str());
        const ORVLOG_ImageParams& image = session_of(test)->image;
        EXPECT_EQ(image.has_file_prefix, 1U);
        EXPECT_EQ(std::string(image.file_prefix), prefix.substr(0, 999));
        EXPECT_EQ(image.file_prefix[999], '\0');
    }
}

TEST(Session, CommentFunctionNeedsBothPlaces)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv;
    orvlog_comment_fn_type comment = nullptr;
    void* context = nullptr;
    ASSERT_NE(ORVLOG_DLL_initialise(&orv, nullptr, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, &comment, nullptr),
              0U);
    EXPECT_EQ(comment, nullptr);
    ORVLOG_DLL_shutdown(orv.document_start.context);
    ASSERT_NE(ORVLOG_DLL_initialise(&orv, nullptr, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, nullptr, &context),
              0U);
    EXPECT_EQ(context, nullptr);
    ORVLOG_DLL_shutdown(orv.document_start.context);
}

int32_t say(orvlog_comment_fn_type comment, void* context, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t length = comment(context, format, args);
    va_end(args);
    return length;
}

TEST(Session, CommentFunctionWritesAComment)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv;
    orvlog_comment_fn_type comment = nullptr;
    void* context = nullptr;
    ASSERT_NE(ORVLOG_DLL_initialise(&orv, nullptr, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    nullptr, nullptr, 0, &comment, &context),
              0U);
    ASSERT_NE(comment, nullptr);
    stream.clear();
    EXPECT_EQ(say(comment, context, "page %i of \"%s\" -->\n", 3, "a<b"), 20);
    EXPECT_EQ(stream.text(), "\n<!--\npage 3 of \"a<b\" -->\n-->\n");
    ORVLOG_DLL_shutdown(orv.document_start.context);
}

TEST(Shutdown, OfNothingGivesOne)
{
    EXPECT_EQ(ORVLOG_DLL_shutdown(nullptr), 1U);
}

TEST(Shutdown, GivesBackWhatTheClientLeftOpen)
{
    TestSession test;
    ORV_DrawingInterface face;
    ORV_DrawingInterface resource;
    uint32_t resource_id = 99;
    const ORV_ResourceProperties properties = {};
    test.start_document();
    test.start_face(&face);
    test.orv.resource_start.fn(nullptr, &test.orv, test.document, &resource, &face, nullptr, &properties, nullptr,
                               &resource_id);
    face.group_start.fn(&face, 1, nullptr, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, 0,
                        0, 0, nullptr, nullptr, nullptr);
    const size_t calls = test.renderer.calls().size();
    test.forget();
    EXPECT_EQ(test.shut_down(), 1U);
    EXPECT_EQ(test.log(), "</ORV>\n");
    EXPECT_EQ(test.renderer.calls().size(), calls);
    EXPECT_EQ(test.allocator.outstanding(), 0U);
    EXPECT_EQ(test.allocator.bad_frees(), 0U);
}

TEST(Parameters, OfNoSessionGiveOne)
{
    const ORVLOG_Params params = {nullptr, 0, 0};
    EXPECT_EQ(ORVLOG_DLL_set_parameters(nullptr, &params), 1U);
    TestSession test;
    EXPECT_EQ(ORVLOG_DLL_set_parameters(test.session(), nullptr), 1U);
    EXPECT_EQ(session_of(test)->logging_mode, 0U);
}

TEST(Parameters, ChooseBaseMode)
{
    TestSession test;
    FakeRenderer second("second");
    ORVLOG_Session* session = session_of(test);
    session->glyph_fixed_format = 5;
    session->image.image_dump_flag = 5;
    const ORVLOG_Params params = {second.get(), 0xFFFF, 0};
    EXPECT_EQ(ORVLOG_DLL_set_parameters(session, &params), 1U);
    EXPECT_EQ(session->logging_mode, 1U);
    EXPECT_EQ(session->image.image_logging_mode, 1U);
    EXPECT_EQ(session->glyph_fixed_format, 0U);
    EXPECT_EQ(session->image.image_dump_flag, 0U);
    EXPECT_EQ(session->glyph_get_format, 1U);
    EXPECT_EQ(session->second_interface, second.get());
    EXPECT_EQ(test.log(), "");
    EXPECT_NE(test.stream.text().find("LoggingMode=\"transparent\""), std::string::npos);
}

TEST(Parameters, ObsoleteModeBecomesTransparentWithAWarning)
{
    TestSession test;
    ORVLOG_Session* session = session_of(test);
    session->logging_mode = 1;
    session->image.image_logging_mode = 1;
    const ORVLOG_Params params = {nullptr, 0, 1};
    EXPECT_EQ(ORVLOG_DLL_set_parameters(session, &params), 1U);
    EXPECT_EQ(session->logging_mode, 0U);
    EXPECT_EQ(session->image.image_logging_mode, 0U);
    EXPECT_EQ(session->glyph_get_format, 1U);
    EXPECT_EQ(test.log(), "");
    test.start_document();
    EXPECT_EQ(test.log(), "  <ORV_document_start document_context=\"0\" document_id=\"7\" "
                          "font_engine_functions=\"FALSE\">\n"
                          "  </ORV_document_start>\n"
                          "\n<!--\nORVLOG: WARNING: Version 1.1 ORVLOG_Params.up_DumpReqImgDataOnly converted to "
                          "transparent mode logging\n-->\n");
}

TEST(Parameters, WarningOfAnEmptyLogStandsBehindTheRoot)
{
    TestSession test;
    const ORVLOG_Params params = {nullptr, 0, 1};
    ORVLOG_DLL_set_parameters(test.session(), &params);
    test.shut_down();
    EXPECT_EQ(test.log(), "</ORV>\n"
                          "\n<!--\nORVLOG: WARNING: Version 1.1 ORVLOG_Params.up_DumpReqImgDataOnly converted to "
                          "transparent mode logging\n-->\n");
    EXPECT_EQ(test.allocator.outstanding(), 0U);
}

TEST(Parameters, LostWarningLosesNothingElse)
{
    TestSession test;
    test.allocator.refuse(1);
    const ORVLOG_Params params = {nullptr, 0, 1};
    EXPECT_EQ(ORVLOG_DLL_set_parameters(test.session(), &params), 1U);
    test.shut_down();
    EXPECT_EQ(test.log(), "</ORV>\n");
}

class Creators : public testing::Test
{
protected:
    const ORVLOG_Session* session()
    {
        return static_cast<ORVLOG_Session*>(orv.document_start.context);
    }
    void TearDown() override
    {
        ORVLOG_DLL_shutdown(orv.document_start.context);
        EXPECT_EQ(allocator.outstanding(), 0U);
    }

    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    ORV_Interface orv = {};
};

TEST_F(Creators, Legacy)
{
    ASSERT_NE(orvlog_initialise_legacy(&orv, renderer.get(), allocator.get(), identity.get(), stream.get(), nullptr,
                                       nullptr, nullptr, nullptr, nullptr),
              0U);
    EXPECT_EQ(stream.text(), kRoot);
    EXPECT_EQ(orv.base.renderer, renderer.get());
    EXPECT_EQ(session()->logging_mode, 0U);
}

TEST_F(Creators, Capture)
{
    ASSERT_NE(orvlog_initialise_capture(&orv, renderer.get(), allocator.get(), identity.get(), 0, stream.get(), nullptr,
                                        0, nullptr, nullptr, nullptr, nullptr, 11, 12, 13, 0),
              0U);
    EXPECT_EQ(orv.base.renderer, nullptr);
    EXPECT_EQ(session()->second_interface, renderer.get());
    EXPECT_EQ(session()->image.image_dump_flag, 11U);
    EXPECT_EQ(session()->glyph_fixed_format, 12U);
    EXPECT_EQ(session()->glyph_get_format, 13U);
    EXPECT_EQ(session()->logging_mode, 1U);
    EXPECT_EQ(session()->image.image_logging_mode, 1U);
    EXPECT_NE(stream.text().find(" LoggingMode=\"base\" GlyphLoggingMode=\"transparent\" "), std::string::npos);
}

TEST_F(Creators, Forwarding)
{
    const int third = 0;
    ASSERT_NE(orvlog_initialise_forwarding(&orv, renderer.get(), allocator.get(), identity.get(), 0, stream.get(),
                                           nullptr, 0, nullptr, nullptr, &third, nullptr, nullptr),
              0U);
    EXPECT_EQ(orv.base.renderer, renderer.get());
    EXPECT_EQ(session()->third_client_table, &third);
    EXPECT_EQ(session()->second_interface, nullptr);
    EXPECT_EQ(session()->glyph_fixed_format, 0U);
    EXPECT_EQ(session()->glyph_get_format, 1U);
    EXPECT_EQ(session()->image.image_dump_flag, 0U);
    EXPECT_EQ(session()->logging_mode, 1U);
    EXPECT_NE(stream.text().find(" LoggingMode=\"base\" "), std::string::npos);
}

TEST_F(Creators, WithoutMemoryGiveZero)
{
    allocator.refuse(1, true);
    EXPECT_EQ(orvlog_initialise_legacy(&orv, nullptr, allocator.get(), identity.get(), stream.get(), nullptr, nullptr,
                                       nullptr, nullptr, nullptr),
              0U);
    EXPECT_EQ(orvlog_initialise_capture(&orv, renderer.get(), allocator.get(), identity.get(), 0, stream.get(), nullptr,
                                        0, nullptr, nullptr, nullptr, nullptr, 1, 1, 1, 0),
              0U);
    EXPECT_EQ(orvlog_initialise_forwarding(&orv, nullptr, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                           nullptr, nullptr, nullptr, nullptr, nullptr),
              0U);
    EXPECT_EQ(orv.document_start.context, nullptr);
    EXPECT_EQ(stream.text(), "");
}

std::string decoded(TestAllocator* allocator, const std::string& coded, size_t length)
{
    AdaptiveHuffmanCoder* coder = AHC_DecoderCreate(allocator->get());
    const std::string input = coded + '\0';
    AHC_SetInput(coder, reinterpret_cast<const uint8_t*>(input.data()), static_cast<uint32_t>(input.size()));
    std::string text(length, '\0');
    const int32_t count =
        AHC_Decode(coder, reinterpret_cast<uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
    text.resize(static_cast<size_t>(count));
    AHC_DecoderDestroy(coder);
    return text;
}

TEST(CodedSession, RepeatsTheTagBehindThirtyFivePlainBytes)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv;
    ASSERT_NE(orvlog_create_session(&orv, nullptr, allocator.get(), identity.get(), stream.get(), nullptr, nullptr,
                                    nullptr, nullptr, nullptr, nullptr, 1, 0),
              0U);
    EXPECT_EQ(ORVLOG_DLL_shutdown(orv.document_start.context), 1U);
    EXPECT_EQ(stream.text().substr(0, 35), "<ORV compression=\"Adaptive Huffman\"");
    const std::string expected = std::string(kRoot) + "</ORV>\n";
    EXPECT_EQ(decoded(&allocator, stream.text().substr(35), expected.size()), expected);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(CodedSession, WithoutACoderStandsPlainWithItsFirstTagTwice)
{
    for (const uint64_t refused : {uint64_t{2}, uint64_t{3}})
    {
        TestAllocator allocator;
        MemoryStream stream;
        FakeIdentity identity;
        ORV_Interface orv;
        allocator.refuse(refused);
        ASSERT_NE(orvlog_create_session(&orv, nullptr, allocator.get(), identity.get(), stream.get(), nullptr, nullptr,
                                        nullptr, nullptr, nullptr, nullptr, 1, 0),
                  0U);
        const auto* session = static_cast<ORVLOG_Session*>(orv.document_start.context);
        EXPECT_EQ(session->writer.compress, 1U);
        EXPECT_EQ(session->writer.coder, nullptr);
        EXPECT_EQ(ORVLOG_DLL_shutdown(orv.document_start.context), 1U);
        EXPECT_EQ(stream.text(), "<ORV compression=\"Adaptive Huffman\"" + std::string(kRoot) + "</ORV>\n");
        EXPECT_EQ(allocator.outstanding(), 0U);
    }
}

TEST(CodedSession, LastByteIsWrittenAsOneItem)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv;
    ASSERT_NE(orvlog_create_session(&orv, nullptr, allocator.get(), identity.get(), stream.get(), nullptr, nullptr,
                                    nullptr, nullptr, nullptr, nullptr, 1, 0),
              0U);
    ORVLOG_DLL_shutdown(orv.document_start.context);
    EXPECT_EQ(stream.pieces().back(), 1U);
}

constexpr char kTempName[] = "orvlog-0f0e0d0c-0b0a0908-07060504-03020100.tmp";

// A job of one document, logged directly or through a temporary file.
std::string log_of_a_job(uint32_t via_temporary_log, uint32_t compress, uint32_t* result, uint64_t room = UINT64_MAX)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv;
    stream.set_room(room);
    ORVLOG_SessionOptions options = {};
    options.interface_out = &orv;
    options.allocator = allocator.get();
    options.identity = identity.get();
    options.log_stream = stream.get();
    options.compress = compress;
    options.via_temporary_log = via_temporary_log;
    EXPECT_NE(orvlog_create_session_with(&options), 0U);
    void* document = nullptr;
    orv.document_start.fn(nullptr, &orv, &document, 1, nullptr, nullptr);
    orv.document_finish.fn(&orv, document);
    EXPECT_EQ(via_temporary_log != 0, stream.text().empty()) << "the client's stream waits for the merge";
    *result = ORVLOG_DLL_shutdown(orv.document_start.context);
    EXPECT_EQ(allocator.outstanding(), 0U);
    EXPECT_FALSE(stream.closed());
    return stream.text();
}

bool take_away(const char* path)
{
    return GIO_FileDelete(path) == 0;
}

TEST(TemporaryLog, BecomesTheClientsLogAtTheShutdown)
{
    uint32_t direct_result = 0;
    uint32_t merged_result = 0;
    const std::string direct = log_of_a_job(0, 0, &direct_result);
    const std::string merged = log_of_a_job(1, 0, &merged_result);
    EXPECT_EQ(direct_result, 1U);
    EXPECT_EQ(merged_result, 1U);
    std::string unix_lines = merged;
    unix_lines.erase(std::remove(unix_lines.begin(), unix_lines.end(), '\r'), unix_lines.end());
    EXPECT_EQ(unix_lines, direct);
    EXPECT_FALSE(take_away(kTempName)) << "a merged temporary log is gone";
}

TEST(TemporaryLog, CanBeCodedInTheMerge)
{
    uint32_t result = 0;
    const std::string coded = log_of_a_job(1, 1, &result);
    EXPECT_EQ(result, 1U);
    EXPECT_EQ(coded.substr(0, 35), "<ORV compression=\"Adaptive Huffman\"");
    TestAllocator allocator;
    EXPECT_EQ(decoded(&allocator, coded.substr(35), sizeof kRoot - 2), std::string(kRoot).substr(0, sizeof kRoot - 2));
}

TEST(TemporaryLog, StaysWhenTheMergeFails)
{
    uint32_t result = 1;
    log_of_a_job(1, 0, &result, 100);
    EXPECT_EQ(result, 0U);
    EXPECT_TRUE(take_away(kTempName));
}

TEST(TemporaryLog, ThatCannotBeOpenedRefusesTheSession)
{
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv = {};
    allocator.refuse(2);
    ORVLOG_SessionOptions options = {};
    options.interface_out = &orv;
    options.allocator = allocator.get();
    options.identity = identity.get();
    options.log_stream = stream.get();
    options.via_temporary_log = 1;
    EXPECT_EQ(orvlog_create_session_with(&options), 0U);
    EXPECT_EQ(stream.text(), "");
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(Session, StandsFailingStreamOperations)
{
    const auto failed = [](uint64_t n)
    {
        TestAllocator allocator;
        MemoryStream stream;
        FakeIdentity identity;
        ORV_Interface orv;
        stream.fail(n, true);
        EXPECT_NE(ORVLOG_DLL_initialise(&orv, nullptr, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                        nullptr, nullptr, 0, nullptr, nullptr),
                  0U);
        EXPECT_EQ(ORVLOG_DLL_shutdown(orv.document_start.context), 1U);
        EXPECT_EQ(allocator.outstanding(), 0U);
        return stream.failed() != 0;
    };
    EXPECT_GT(sweep_failures(failed), 50U);
}

}  // namespace
