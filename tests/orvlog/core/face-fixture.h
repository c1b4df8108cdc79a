// A document that has begun, and what the tests of the calls that begin a drawing share.

#pragma once

#include "orvlog/session/orvlog-session.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace orvlog::test
{

inline int error_object;
inline int extra_object;
inline int ticket_object;

inline ORVLOG_Session* session_of(TestSession& test)
{
    return static_cast<ORVLOG_Session*>(test.session());
}

inline ORVLOG_DrawingContext* drawing_of(const ORV_DrawingInterface& table)
{
    return static_cast<ORVLOG_DrawingContext*>(table.object_paint.context);
}

inline std::string number(const void* pointer)
{
    return std::to_string(reinterpret_cast<uintptr_t>(pointer));
}

class Face : public testing::Test
{
protected:
    Face()
    {
        test.start_document();
        test.forget();
    }

    TestSession test;
    ORV_DrawingInterface face = {};
    ORV_FaceProperties properties = letter_face();
};

}  // namespace orvlog::test
