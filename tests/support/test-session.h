// A session under test with all that a client brings: allocator, stream, identity, renderer.

#pragma once

#include "orvlog/interface/orvlog.h"
#include "tests/support/fake-identity.h"
#include "tests/support/fake-renderer.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <string>

namespace orvlog::test
{

enum class Behind
{
    kRenderer,
    kNothing
};

class TestSession
{
public:
    explicit TestSession(Behind behind = Behind::kRenderer, const char* file_prefix = nullptr,
                         const ORVLOG_TicketFunctions* ticket_functions = nullptr,
                         const ORVLOG_TicketSerialFunctions* ticket_serial_functions = nullptr);
    TestSession(const TestSession&) = delete;
    TestSession& operator=(const TestSession&) = delete;
    ~TestSession();

    // The session itself is the context word of the first call.
    void* session()
    {
        return orv.document_start.context;
    }
    bool set_base_mode();
    void set_second(const ORV_Interface* second);
    // Ends the session; again does nothing.
    uint32_t shut_down();

    // What the log holds behind the opening tag of the root, since the last `forget`.
    std::string log() const;
    void forget()
    {
        forgotten_ = stream.text().size();
    }

    // Calls with ordinary arguments; each fails the test's run by giving 0.
    uint32_t start_document();
    uint32_t finish_document();
    uint32_t start_face(ORV_DrawingInterface* drawing);

    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    ORV_Interface orv;
    void* document = nullptr;
    uint32_t initialised = 0;

private:
    size_t forgotten_ = 0;
    bool ended_ = false;
};

// Properties of a letter page at 100 dots an inch.
ORV_FaceProperties letter_face();

}  // namespace orvlog::test
