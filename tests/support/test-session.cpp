#include "tests/support/test-session.h"

namespace orvlog::test
{

TestSession::TestSession(Behind behind, const char* file_prefix, const ORVLOG_TicketFunctions* ticket_functions,
                         const ORVLOG_TicketSerialFunctions* ticket_serial_functions)
    : orv{}
{
    initialised = ORVLOG_DLL_initialise(&orv, behind == Behind::kRenderer ? renderer.get() : nullptr, allocator.get(),
                                        identity.get(), 0, stream.get(), file_prefix, 0, ticket_functions,
                                        ticket_serial_functions, 0, nullptr, nullptr);
    forget();
}

TestSession::~TestSession()
{
    shut_down();
}

bool TestSession::set_base_mode()
{
    const ORVLOG_Params params = {nullptr, 0, 0};
    return ORVLOG_DLL_set_parameters(session(), &params) == 1;
}

void TestSession::set_second(const ORV_Interface* second)
{
    const ORVLOG_Params params = {second, 0, 0};
    ORVLOG_DLL_set_parameters(session(), &params);
}

uint32_t TestSession::shut_down()
{
    if (ended_ || initialised == 0)
        return 1;
    ended_ = true;
    return ORVLOG_DLL_shutdown(session());
}

std::string TestSession::log() const
{
    return stream.text().substr(forgotten_);
}

uint32_t TestSession::start_document()
{
    return orv.document_start.fn(nullptr, &orv, &document, 7, nullptr, nullptr);
}

uint32_t TestSession::finish_document()
{
    return orv.document_finish.fn(&orv, document);
}

uint32_t TestSession::start_face(ORV_DrawingInterface* drawing)
{
    const ORV_FaceProperties properties = letter_face();
    return orv.face_start.fn(nullptr, &orv, document, drawing, nullptr, 1, &properties, nullptr, 0, 0);
}

ORV_FaceProperties letter_face()
{
    return {0, {{100, 0, 0, 100, 0, 0}}, 850, 1100, {0, 0, 8.5, 11}, {0, 0, 8.5, 11}, {8.5, 11}};
}

}  // namespace orvlog::test
