// The error record and the error log.

#include "holv-core/ger/ger-error.h"
#include "holv-core/ger/ger-log.h"
#include "tests/support/fake-locks.h"
#include "tests/support/guarded-block.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace orvlog::test;

class ErrorLog : public testing::Test
{
protected:
    ErrorLog()
    {
        EXPECT_EQ(GER_LogCreate(stream.get(), allocator.get(), &locks.services, 77, nullptr, nullptr, &log), 0);
    }
    ~ErrorLog() override
    {
        EXPECT_EQ(log != nullptr ? GER_LogDestroy(log) : 0, 0);
        EXPECT_EQ(allocator.outstanding(), 0U);
        EXPECT_EQ(locks.held, 0);
    }

    std::string take()
    {
        std::string text = stream.text();
        stream.clear();
        return text;
    }

    FakeLocks locks;
    TestAllocator allocator;
    MemoryStream stream;
    GER_Log* log = nullptr;
};

TEST_F(ErrorLog, CreationFillsTheRecord)
{
    EXPECT_EQ(log->gl_Allocator, allocator.get());
    EXPECT_EQ(log->gl_OsServices, &locks.services);
    EXPECT_EQ(log->gl_OutputHook, nullptr);
    EXPECT_EQ(log->gl_LockTimeout, 77U);
    EXPECT_EQ(log->gl_DefaultLevel, 2U);
    EXPECT_EQ(log->gl_DefaultChannel, 0);
    EXPECT_EQ(log->gl_ChannelCount, 1);
    EXPECT_EQ(log->gl_ChannelCapacity, 1);
    EXPECT_EQ(log->gl_ChannelLevels[0], 0xFFFFFFFFU);
    EXPECT_EQ(log->gl_Outputs[0].instance, stream.get()->instance);
    EXPECT_EQ(log->gl_Outputs[0].ops, stream.get()->ops);
    EXPECT_EQ(locks.created, 1U);
    GER_LogPrint(log, 1, 0, "x");
    EXPECT_EQ(locks.last_timeout, 77U);
}

TEST_F(ErrorLog, CreationRefusesMissingArguments)
{
    GER_Log* other = log;
    EXPECT_EQ(GER_LogCreate(nullptr, allocator.get(), &locks.services, 0, nullptr, nullptr, &other), 22);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(GER_LogCreate(stream.get(), nullptr, &locks.services, 0, nullptr, nullptr, &other), 22);
    EXPECT_EQ(GER_LogCreate(stream.get(), allocator.get(), nullptr, 0, nullptr, nullptr, &other), 22);
    EXPECT_EQ(GER_LogCreate(stream.get(), allocator.get(), &locks.services, 0, nullptr, nullptr, nullptr), 22);
}

TEST_F(ErrorLog, CreationWithoutMemoryOrLock)
{
    const uint64_t outstanding = allocator.outstanding();
    GER_Log* other = log;
    for (uint64_t n = 1; n <= 3; ++n)
    {
        allocator.refuse(n);
        EXPECT_EQ(GER_LogCreate(stream.get(), allocator.get(), &locks.services, 0, nullptr, nullptr, &other), 12);
        EXPECT_EQ(other, nullptr);
        EXPECT_EQ(allocator.outstanding(), outstanding);
    }
    locks.create_result = 4;
    EXPECT_EQ(GER_LogCreate(stream.get(), allocator.get(), &locks.services, 0, nullptr, nullptr, &other), 1000);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(allocator.outstanding(), outstanding);
}

TEST_F(ErrorLog, PrintsWhatTheFormatSays)
{
    EXPECT_EQ(GER_LogPrint(log, 1, 0, "%s %i", "line", 7), 0);
    EXPECT_EQ(take(), "line 7");
    EXPECT_EQ(GER_LogPrint(nullptr, 1, 0, "x"), 22);
    EXPECT_EQ(GER_LogPrint(log, 1, 0, nullptr), 22);
    const char* empty = "";
    EXPECT_EQ(GER_LogPrint(log, 1, 0, empty), 22);
    EXPECT_EQ(take(), "");
}

TEST_F(ErrorLog, LinesAreCutAt1023)
{
    EXPECT_EQ(GER_LogPrint(log, 1, 0, "%s", std::string(1023, 'a').c_str()), 0);
    EXPECT_EQ(take(), std::string(1023, 'a'));
    EXPECT_EQ(GER_LogPrint(log, 1, 0, "%s", std::string(1024, 'b').c_str()), 0);
    EXPECT_EQ(take(), std::string(1023, 'b'));
}

// Windows prints any character, so that no format fails there.
#ifndef _WIN32
TEST_F(ErrorLog, FormatThatFailsPrintsNothing)
{
    const char* no_character = "%lc";
    ASSERT_LT(std::snprintf(nullptr, 0, no_character, static_cast<wint_t>(0xDC00)), 0);
    EXPECT_EQ(GER_LogPrint(log, 1, 0, no_character, static_cast<wint_t>(0xDC00)), 1000);
    EXPECT_EQ(take(), "");
    EXPECT_EQ(locks.held, 0);
}
#endif

TEST_F(ErrorLog, LevelsFilter)
{
    EXPECT_EQ(GER_LogPrint(log, 3, 0, "three"), 0);
    EXPECT_EQ(take(), "");
    EXPECT_EQ(GER_LogPrint(log, 2, 0, "two"), 0);
    EXPECT_EQ(take(), "two");
    EXPECT_EQ(GER_LogPrint(log, -5, 0, "negative"), 0);
    EXPECT_EQ(take(), "negative");
    EXPECT_EQ(GER_LogSetDefaultLevel(log, 5), 0);
    GER_LogPrint(log, 5, 0, "five");
    EXPECT_EQ(take(), "five");
    EXPECT_EQ(GER_LogSetChannelLevel(log, 1, 0), 0);
    GER_LogPrint(log, 2, 0, "two");
    EXPECT_EQ(take(), "");
    GER_LogPrint(log, 1, 0, "one");
    EXPECT_EQ(take(), "one");
}

TEST_F(ErrorLog, ChannelBeyondTheCapacityGetsTheDefaultOutput)
{
    EXPECT_EQ(GER_LogPrint(log, 1, 4, "four"), 0);
    EXPECT_EQ(take(), "four");
    EXPECT_EQ(log->gl_ChannelCapacity, 5);
    EXPECT_EQ(log->gl_ChannelCount, 2);
    EXPECT_EQ(log->gl_Outputs[4].instance, stream.get()->instance);
    EXPECT_EQ(log->gl_Outputs[2].instance, nullptr);
    EXPECT_EQ(log->gl_ChannelLevels[3], 0xFFFFFFFFU);
    MemoryStream other;
    EXPECT_EQ(GER_LogSetOutput(log, other.get(), 0, 0), 0);
    GER_LogPrint(log, 1, 4, "again");
    EXPECT_EQ(take(), "again");
    GER_LogPrint(log, 1, 2, "two");
    EXPECT_EQ(other.text(), "two");
    EXPECT_EQ(log->gl_Outputs[2].instance, other.get()->instance);
}

TEST_F(ErrorLog, WithoutAnyOutputTheLineIsDropped)
{
    const GIO_Stream empty = {nullptr, 0, nullptr};
    EXPECT_EQ(GER_LogSetOutput(log, &empty, 0, 0), 0);
    EXPECT_EQ(GER_LogPrint(log, 1, 0, "x"), 0);
    EXPECT_EQ(GER_LogPrint(log, 1, 3, "x"), 0);
    EXPECT_EQ(log->gl_ChannelCapacity, 4);
    EXPECT_EQ(GER_LogPrint(log, 1, -1, "x"), 0);
    EXPECT_EQ(GER_LogSetOutput(log, stream.get(), 0, 0), 0);
    EXPECT_EQ(GER_LogPrint(log, 1, 3, "now"), 0);
    EXPECT_EQ(take(), "now");
}

TEST_F(ErrorLog, LevelsAreComparedAsSigned)
{
    EXPECT_EQ(GER_LogSetDefaultLevel(log, 0x80000000), 0);
    EXPECT_EQ(GER_LogPrint(log, 0, 0, "x"), 0);
    EXPECT_EQ(GER_LogPrint(log, -5, 0, "x"), 0);
    EXPECT_EQ(take(), "");
    EXPECT_EQ(GER_LogSetDefaultLevel(log, 0x7FFFFFFF), 0);
    EXPECT_EQ(GER_LogPrint(log, 0x7FFFFFFF, 0, "y"), 0);
    EXPECT_EQ(take(), "y");
}

TEST_F(ErrorLog, NegativeChannelIsTheDefaultOne)
{
    EXPECT_EQ(GER_LogPrint(log, 1, -7, "x"), 0);
    EXPECT_EQ(take(), "x");
    EXPECT_EQ(log->gl_ChannelCapacity, 1);
}

TEST_F(ErrorLog, ChannelNumbersAreBounded)
{
    EXPECT_EQ(GER_LogSetOutput(log, stream.get(), -1, 0), 22);
    EXPECT_EQ(GER_LogSetOutput(log, stream.get(), 9999, 0), 22);
    EXPECT_EQ(GER_LogSetOutput(log, nullptr, 1, 0), 22);
    EXPECT_EQ(GER_LogSetOutput(nullptr, stream.get(), 1, 0), 22);
    EXPECT_EQ(GER_LogPrint(log, 1, 9999, "x"), 22);
    EXPECT_EQ(GER_LogPrint(log, 1, 9998, "x"), 0);
    EXPECT_EQ(log->gl_ChannelCapacity, 9999);
    log->gl_ChannelCount = 10000;
    EXPECT_EQ(GER_LogSetOutput(log, stream.get(), 5, 0), 28);
}

TEST_F(ErrorLog, GrowthWithoutMemoryKeepsTheOldArrays)
{
    for (uint64_t n = 1; n <= 2; ++n)
    {
        allocator.refuse(n);
        EXPECT_EQ(GER_LogSetOutput(log, stream.get(), 8, 1), 12);
        EXPECT_EQ(log->gl_ChannelCapacity, 1);
        EXPECT_EQ(log->gl_DefaultChannel, 0);
        EXPECT_EQ(GER_LogPrint(log, 1, 0, "x"), 0);
        EXPECT_EQ(take(), "x");
    }
    allocator.refuse(1);
    EXPECT_EQ(GER_LogPrint(log, 1, 8, "x"), 12);
    EXPECT_EQ(locks.held, 0);
}

TEST_F(ErrorLog, DefaultChannelMoves)
{
    MemoryStream other;
    EXPECT_EQ(GER_LogSetOutput(log, other.get(), 3, 1), 0);
    EXPECT_EQ(log->gl_DefaultChannel, 3);
    GER_LogPrint(log, 1, -1, "x");
    EXPECT_EQ(other.text(), "x");
    EXPECT_EQ(GER_LogSetDefaultChannel(log, 0), 0);
    GER_LogPrint(log, 1, -1, "y");
    EXPECT_EQ(take(), "y");
    EXPECT_EQ(GER_LogSetDefaultChannel(log, 4), 22);
    EXPECT_EQ(GER_LogSetDefaultChannel(log, -1), 22);
    EXPECT_EQ(GER_LogSetChannelLevel(log, 1, 4), 22);
    EXPECT_EQ(GER_LogSetChannelLevel(log, 1, -1), 22);
    EXPECT_EQ(GER_LogSetChannelLevel(log, 1, 9999), 22);
}

TEST_F(ErrorLog, NullLogsAreRefused)
{
    EXPECT_EQ(GER_LogDestroy(nullptr), 22);
    EXPECT_EQ(GER_LogSetOutput(nullptr, stream.get(), 0, 0), 22);
    EXPECT_EQ(GER_LogSetDefaultLevel(nullptr, 1), 22);
    EXPECT_EQ(GER_LogSetChannelLevel(nullptr, 1, 0), 22);
    EXPECT_EQ(GER_LogSetDefaultChannel(nullptr, 0), 22);
    EXPECT_EQ(locks.held, 0);
}

TEST_F(ErrorLog, LockThatCannotBeHadLosesTheLine)
{
    locks.take_result = 1;
    EXPECT_EQ(GER_LogPrint(log, 1, 0, "x"), 1000);
    EXPECT_EQ(GER_LogSetDefaultLevel(log, 1), 1000);
    EXPECT_EQ(GER_LogSetChannelLevel(log, 1, 0), 1000);
    EXPECT_EQ(GER_LogSetDefaultChannel(log, 0), 1000);
    EXPECT_EQ(GER_LogSetOutput(log, stream.get(), 0, 0), 1000);
    EXPECT_EQ(GER_LogDestroy(log), 1000);
    EXPECT_EQ(take(), "");
    locks.take_result = 5;
    locks.release_result = 2;
    EXPECT_EQ(GER_LogPrint(log, 1, 0, "y"), 0);
    EXPECT_EQ(take(), "y");
    locks.release_result = 5;
}

TEST_F(ErrorLog, FailedWriteGives1000)
{
    stream.fail(1);
    EXPECT_EQ(GER_LogPrint(log, 1, 0, "lost"), 1000);
    MemoryStream small;
    small.set_room(2);
    GER_LogSetOutput(log, small.get(), 0, 0);
    EXPECT_EQ(GER_LogPrint(log, 1, 0, "four"), 1000);
}

TEST_F(ErrorLog, DestroyReportsTheLock)
{
    locks.release_result = 1;
    EXPECT_EQ(GER_LogDestroy(log), 1001);
    log = nullptr;
    EXPECT_EQ(locks.destroyed, 1U) << "a lock that was not released is destroyed all the same";
    locks.release_result = 5;
    EXPECT_EQ(GER_LogCreate(stream.get(), allocator.get(), &locks.services, 0, nullptr, nullptr, &log), 0);
    locks.destroy_result = 1;
    EXPECT_EQ(GER_LogDestroy(log), 1001);
    log = nullptr;
    EXPECT_FALSE(stream.closed());
}

struct Hooked
{
    const GER_OsServices* services = nullptr;
    int32_t held = 0;
    std::string text;
    int32_t level = 0;
    int32_t channel = 0;
    const GIO_Stream* output = nullptr;
};

TEST_F(ErrorLog, HookReplacesTheWrite)
{
    Hooked hooked;
    GER_Log* other = nullptr;
    const auto hook = [](GIO_Stream* output, void* context, const GER_OsServices* services, int32_t level,
                         int32_t channel, const char* text, uint64_t length) -> int32_t
    {
        const int32_t held = reinterpret_cast<const FakeLocks*>(services)->held;
        *static_cast<Hooked*>(context) = {services, held, std::string(text, length), level, channel, output};
        return 1234;
    };
    ASSERT_EQ(GER_LogCreate(stream.get(), allocator.get(), &locks.services, 0, hook, &hooked, &other), 0);
    EXPECT_EQ(GER_LogPrint(other, 2, -3, "to the %s", "hook"), 1234);
    EXPECT_EQ(hooked.text, "to the hook");
    EXPECT_EQ(hooked.services, &locks.services);
    EXPECT_EQ(hooked.held, 1) << "the lock is held meanwhile";
    EXPECT_EQ(hooked.level, 2);
    EXPECT_EQ(hooked.channel, 0);
    EXPECT_EQ(hooked.output, other->gl_Outputs);
    EXPECT_EQ(take(), "");
    EXPECT_EQ(GER_LogDestroy(other), 0);
}

// Locks that hold threads back.
struct ThreadLocks
{
    ThreadLocks() : services{}
    {
        services.create = [](const GER_OsServices*, void*, void** lock, uintptr_t, uintptr_t) -> int32_t
        {
            *lock = new std::timed_mutex;
            return 5;
        };
        services.destroy = [](const GER_OsServices*, void* lock) -> int32_t
        {
            delete static_cast<std::timed_mutex*>(lock);
            return 5;
        };
        services.release = [](const GER_OsServices*, void* lock) -> int32_t
        {
            static_cast<std::timed_mutex*>(lock)->unlock();
            return 5;
        };
        services.take = [](const GER_OsServices*, void* lock, uintptr_t, uint32_t timeout) -> int32_t
        { return static_cast<std::timed_mutex*>(lock)->try_lock_for(std::chrono::milliseconds(timeout)) ? 5 : 1; };
    }

    GER_OsServices services;
};

TEST_F(ErrorLog, ManyThreadsPrintAndGrow)
{
    ThreadLocks thread_locks;
    GER_Log* shared = nullptr;
    ASSERT_EQ(GER_LogCreate(stream.get(), allocator.get(), &thread_locks.services, 60000, nullptr, nullptr, &shared),
              0);
    std::vector<std::thread> threads;
    for (int32_t t = 0; t < 4; ++t)
        threads.emplace_back(
            [shared, t]
            {
                for (int32_t i = 0; i < 500; ++i)
                    GER_LogPrint(shared, 1, i * 4 + t, "line %d\n", t);
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(shared->gl_ChannelCapacity, 2000);
    const std::string text = take();
    EXPECT_EQ(text.size(), 2000U * 7);
    for (size_t at = 0; at < text.size(); at += 7)
        ASSERT_EQ(text.substr(at, 5), "line ");
    EXPECT_EQ(GER_LogDestroy(shared), 0);
}

// An error record with so much room for its text, its last byte the last of a page.
class Record : public ErrorLog
{
protected:
    GER_Error* make(uint64_t capacity, const std::string& prefix = "")
    {
        block =
            std::make_unique<GuardedBlock>((offsetof(GER_Error, ge_Text) + prefix.size() + capacity + 1 + 7) / 8 * 8);
        auto* error = block->as<GER_Error>();
        std::memset(block->data(), 0, block->size());
        error->ge_Log = log;
        error->ge_Level = 1;
        error->ge_TextCapacity = capacity;
        error->ge_PrefixLength = static_cast<uint32_t>(prefix.size());
        std::memcpy(error->ge_Text, prefix.c_str(), prefix.size() + 1);
        return error;
    }

    std::unique_ptr<GuardedBlock> block;
};

TEST_F(Record, SetStoresTheFirstError)
{
    GER_Error* error = make(40, "Page 3: ");
    GER_ErrorSet(error, 2, 6, 33302523, "read %i failed", 5);
    EXPECT_EQ(error->ge_Severity, 2);
    EXPECT_EQ(error->ge_Module, 6);
    EXPECT_EQ(error->ge_Code, 33302523);
    EXPECT_STREQ(error->ge_Text, "Page 3: read 5 failed");
    EXPECT_EQ(take(), "GER 2:6:33302523 'Page 3: read 5 failed'");
    GER_ErrorSet(error, 9, 7, 8, "worse %s", "error");
    EXPECT_EQ(error->ge_Severity, 2);
    EXPECT_STREQ(error->ge_Text, "Page 3: read 5 failed");
    EXPECT_EQ(take(), "GER (Error Already Set)9:7:8");
}

TEST_F(Record, SeverityOfZeroDoesNothing)
{
    GER_Error* error = make(10);
    GER_ErrorSet(error, 0, 6, 1, "x");
    GER_ErrorRaise(error, 0, 6, 1, "x");
    EXPECT_EQ(error->ge_Severity, 0);
    EXPECT_EQ(error->ge_Code, 0);
    EXPECT_EQ(take(), "");
    GER_ErrorSet(nullptr, 1, 1, 1, "x");
    GER_ErrorRaise(nullptr, 1, 1, 1, "x");
}

TEST_F(Record, RaiseKeepsTheWorstAndOfEqualsTheFirst)
{
    GER_Error* error = make(20);
    GER_ErrorRaise(error, 2, 1, 10, "first");
    EXPECT_EQ(take(), "GER 2:1:10 'first'");
    GER_ErrorRaise(error, 2, 1, 11, "equal");
    EXPECT_EQ(take(), "GER (Error Ignored)2:1:10 'first'");
    GER_ErrorRaise(error, 1, 1, 12, "lower");
    EXPECT_EQ(take(), "GER (Error Ignored)2:1:10 'first'");
    GER_ErrorRaise(error, 3, 4, 13, "worse");
    EXPECT_EQ(take(), "GER 3:4:13 'worse'");
    EXPECT_EQ(error->ge_Severity, 3);
    EXPECT_STREQ(error->ge_Text, "worse");
}

TEST_F(Record, RaiseFormatsItsArguments)
{
    GER_Error* error = make(40, "Page 3: ");
    GER_ErrorRaise(error, 2, 6, 33302523, "row %i of %s", 5, "image");
    EXPECT_STREQ(error->ge_Text, "Page 3: row 5 of image");
    EXPECT_EQ(take(), "GER 2:6:33302523 'Page 3: row 5 of image'");
}

// What a failed format has left behind the prefix is not taken for a message.
#ifndef _WIN32
TEST_F(Record, FormatThatFailsLeavesNoText)
{
    const char* no_character = "lost %lc";
    ASSERT_LT(std::snprintf(nullptr, 0, no_character, static_cast<wint_t>(0xDC00)), 0);
    for (const bool raise : {false, true})
    {
        GER_Error* error = make(20, "p:");
        std::memset(error->ge_Text + 2, 'x', 20);
        if (raise)
            GER_ErrorRaise(error, 1, 2, 3, no_character, static_cast<wint_t>(0xDC00));
        else
            GER_ErrorSet(error, 1, 2, 3, no_character, static_cast<wint_t>(0xDC00));
        EXPECT_STREQ(error->ge_Text, "p:");
        EXPECT_EQ(error->ge_Text[2 + 20], '\0');
        EXPECT_EQ(take(), "GER 1:2:3 'p:'");
    }
}
#endif

TEST_F(Record, TextIsCutAtTheCapacity)
{
    GER_Error* error = make(5, "p:");
    GER_ErrorSet(error, 1, 2, 3, "%s", "abcdefgh");
    EXPECT_STREQ(error->ge_Text, "p:abcde");
    EXPECT_EQ(error->ge_Text[2 + 5], '\0');
}

TEST_F(Record, TerminatorStandsBehindTheCapacity)
{
    GER_Error* error = make(6, "p:");
    std::memset(error->ge_Text + 2, '#', 7);
    GER_ErrorSet(error, 1, 2, 3, "ab");
    EXPECT_EQ(std::string(error->ge_Text, 9), std::string("p:ab\0###\0", 9));
}

TEST_F(Record, WithoutFormatTheTextEndsBehindThePrefix)
{
    GER_Error* error = make(10, "p:");
    std::strcpy(error->ge_Text, "p:old");
    const char* no_format = nullptr;
    GER_ErrorSet(error, 1, 2, 3, no_format);
    EXPECT_STREQ(error->ge_Text, "p:");
    EXPECT_EQ(take(), "GER 1:2:3 'p:'");
}

TEST_F(Record, WithoutCapacityTheFormerTextStays)
{
    GER_Error* error = make(0, "kept");
    GER_ErrorSet(error, 1, 2, 3, "%s", "dropped");
    EXPECT_STREQ(error->ge_Text, "kept");
    EXPECT_EQ(take(), "GER 1:2:3 'kept'");
}

TEST_F(Record, WithoutLogTheRecordIsKept)
{
    GER_Error* error = make(10);
    error->ge_Log = nullptr;
    GER_ErrorSet(error, 1, 2, 3, "x");
    EXPECT_EQ(error->ge_Code, 3);
    locks.take_result = 0;
    error->ge_Log = log;
    GER_ErrorRaise(error, 2, 2, 4, "y");
    EXPECT_EQ(error->ge_Code, 4);
    locks.take_result = 5;
}

TEST_F(Record, LongLinesAreCutAndTheTextStays)
{
    GER_Error* error = make(2000);
    GER_ErrorSet(error, 1, 2, 3, "%s", std::string(1500, 'm').c_str());
    EXPECT_EQ(std::string(error->ge_Text), std::string(1500, 'm'));
    EXPECT_EQ(take(), "GER 1:2:3 '" + std::string(1023 - 11, 'm'));
}

TEST_F(Record, NegativeNumbers)
{
    GER_Error* error = make(10);
    GER_ErrorSet(error, -1, -2, -3, "x");
    EXPECT_EQ(error->ge_Severity, -1);
    EXPECT_EQ(take(), "GER -1:-2:-3 'x'");
    GER_ErrorRaise(error, -2, 5, 6, "y");
    EXPECT_EQ(take(), "GER (Error Ignored)-1:-2:-3 'x'");
    GER_ErrorRaise(error, 1, 5, 6, "y");
    EXPECT_EQ(take(), "GER 1:5:6 'y'");
}

TEST_F(Record, GoesOutOnItsChannelAndLevel)
{
    MemoryStream other;
    GER_LogSetOutput(log, other.get(), 2, 0);
    GER_Error* error = make(10);
    error->ge_Channel = 2;
    GER_ErrorSet(error, 1, 2, 3, "x");
    EXPECT_EQ(other.text(), "GER 1:2:3 'x'");
    EXPECT_EQ(take(), "");
    error->ge_Level = 3;
    GER_ErrorRaise(error, 5, 2, 3, "y");
    EXPECT_EQ(other.text(), "GER 1:2:3 'x'");
}

}  // namespace
