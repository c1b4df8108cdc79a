// Renderers and clients that don't keep to the rules: what the client answers reaches the renderer as it was, nothing
// is written beyond a buffer, the log stays nested, and everything is given back. Each piece of behaviour is run
// against the client's own record first, and then through the logger, in both modes, with and without files beside the
// log.

#include "tests/support/fake-image.h"
#include "tests/support/guarded-block.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

namespace
{

using namespace orvlog::test;

// A renderer that writes down what it is answered.
class Trace
{
public:
    explicit Trace(GOP_OperandImagePointer* image) : record(image) {}

    void prepare()
    {
        note("prepare", record->imp_ImagePrepareFn(&record, GCM_OBJ_IMAGE, 0, 0, 0, 0, 0, 0, 0, GNC_BMP_DEPTH_8, 0));
    }
    // "read:ANSWER/RETURNED[BYTES]", and what stands in the attribute buffer where there is one.
    void read(bool with_attr = false)
    {
        GuardedBlock row(2);
        GuardedBlock attr(2);
        for (uint32_t i = 0; i < 2; ++i)
            row.data()[i] = attr.data()[i] = 0xEE;
        int32_t returned = -99;
        int32_t attr_returned = -99;
        const uint32_t answer =
            record->imp_ImageReadFn(record, record->imp_Context, 0, row.data(), 2, 2, &returned,
                                    with_attr ? attr.data() : nullptr, with_attr ? 2 : 0, 2, &attr_returned);
        note("read", answer, std::string("/").append(std::to_string(returned)).append(bytes(row.data())));
        if (!with_attr)
            return;
        text.back() = '/';
        text.append(std::to_string(attr_returned)).append(bytes(attr.data())).append(" ");
    }
    void finish()
    {
        note("finish", record->imp_ImageFinishFn(record, record->imp_Context));
    }
    void reset()
    {
        note("reset", record->imp_ImageResetFn(record, record->imp_Context));
    }
    void keep()
    {
        note("keep", record->imp_ImageKeepFn(record));
    }
    void release()
    {
        record->imp_ImageReleaseFn(record);
        text += "release ";
    }

    GOP_OperandImagePointer* record;
    std::string text;

private:
    void note(const char* call, uint32_t answer, const std::string& more = "")
    {
        text.append(call).append(":").append(std::to_string(answer)).append(more).append(" ");
    }
    static std::string bytes(const uint8_t* data)
    {
        char room[8];
        std::snprintf(room, sizeof room, "[%02x%02x]", data[0], data[1]);
        return room;
    }
};

using Act = std::function<void(Trace*)>;

void expect_nested(const std::string& text)
{
    std::vector<std::string> open;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
    {
        const size_t at = line.find_first_not_of(' ');
        if (at == std::string::npos || line[at] != '<' || line.starts_with("<!--") || line.ends_with("/>"))
            continue;
        const bool closes = line[at + 1] == '/';
        const size_t name = at + (closes ? 2 : 1);
        const std::string element = line.substr(name, line.find_first_of(" >", name) - name);
        if (!closes)
        {
            open.push_back(element);
            continue;
        }
        ASSERT_FALSE(open.empty()) << text;
        ASSERT_EQ(open.back(), element) << text;
        open.pop_back();
    }
    EXPECT_TRUE(open.empty()) << text;
}

struct Setting
{
    const char* name;
    const char* prefix;
    bool base;
};

class NastyImage : public testing::TestWithParam<Setting>
{
protected:
    NastyImage()
    {
        set_up = [](FakeImage*) {};
        behind_the_call = [](Trace*) {};
        behind_the_session = [](Trace*) {};
    }
    void prepare_image(FakeImage* image) const
    {
        image->image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
        set_up(image);
    }
    // What the client itself answers.
    std::string without_the_logger() const
    {
        FakeImage image(2, 2);
        prepare_image(&image);
        Trace trace(image.get());
        in_the_call(&trace);
        behind_the_call(&trace);
        behind_the_session(&trace);
        return trace.text;
    }
    std::string through_the_logger()
    {
        FakeImage image(2, 2);
        prepare_image(&image);
        TestSession client(Behind::kRenderer, GetParam().prefix);
        if (GetParam().base)
            client.set_base_mode();
        client.start_document();
        ORV_DrawingInterface drawing = {};
        client.start_face(&drawing);
        Trace trace(nullptr);
        client.renderer.on_draw(
            [&](const char*)
            {
                trace.record = reinterpret_cast<GOP_OperandImagePointer*>(client.renderer.last_operands[0]);
                EXPECT_NE(trace.record, image.get());
                in_the_call(&trace);
            });
        drawing.object_paint.fn(&drawing, 8, 0, nullptr, nullptr, 0, nullptr, image.operand(), nullptr, nullptr);
        client.renderer.on_draw(nullptr);
        behind_the_call(&trace);
        drawing.drawing_finish.fn(&drawing);
        client.finish_document();
        EXPECT_EQ(client.shut_down(), 1U);
        behind_the_session(&trace);
        EXPECT_EQ(client.allocator.outstanding(), 0U);
        EXPECT_EQ(client.allocator.bad_frees(), 0U);
        log = client.stream.text();
        expect_nested(log);
        return trace.text;
    }
    void expect(const std::string& answers)
    {
        EXPECT_EQ(without_the_logger(), answers);
        EXPECT_EQ(through_the_logger(), answers);
    }

    TempFolder folder;
    std::function<void(FakeImage*)> set_up;
    Act in_the_call;
    Act behind_the_call;
    Act behind_the_session;
    std::string log;
};

TEST_P(NastyImage, AnswersThatAreNeitherOneNorZero)
{
    set_up = [](FakeImage* image)
    {
        image->prepare_result = 7;
        image->read_result = 0x80000000;
        image->reset_result = 0xFFFFFFFF;
        image->keep_result = 3;
    };
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read();
        trace->reset();
        trace->keep();
    };
    behind_the_call = [](Trace* trace) { trace->release(); };
    expect("prepare:7 read:2147483648/2[0102] reset:4294967295 keep:3 release ");
}

TEST_P(NastyImage, CallbacksThatFail)
{
    set_up = [](FakeImage* image)
    { image->prepare_result = image->read_result = image->reset_result = image->keep_result = 0; };
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read(true);
        trace->reset();
        trace->keep();
    };
    expect("prepare:0 read:0/2[0102]/2[a0a1] reset:0 keep:0 ");
}

TEST_P(NastyImage, ReadsThatClaimMoreThanTheBufferHolds)
{
    set_up = [](FakeImage* image) { image->claim = INT32_MAX; };
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read(true);
        trace->read();
        trace->finish();
    };
    expect("prepare:1 read:1/2147483647[0102]/2147483647[a0a1] read:1/2147483647[0304] finish:1 ");
    EXPECT_NE(log.find("img_returned=\"2147483647\""), std::string::npos);
    if (GetParam().prefix == nullptr)
        return;
    for (const std::string& name : folder.names())
        EXPECT_LE(folder.read(name).size(), 4U) << name;
}

TEST_P(NastyImage, NegativeCounts)
{
    set_up = [](FakeImage* image) { image->claim = INT32_MIN; };
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read(true);
        trace->finish();
    };
    expect("prepare:1 read:1/-2147483648[0102]/-2147483648[a0a1] finish:1 ");
    EXPECT_NE(log.find("img_returned=\"-2147483648\""), std::string::npos);
    EXPECT_EQ(log.find("BufferUInt8"), std::string::npos);
    for (const std::string& name : folder.names())
        EXPECT_EQ(folder.read(name), "") << name;
}

TEST_P(NastyImage, NeverFinishes)
{
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read(true);
    };
    expect("prepare:1 read:1/2[0102]/2[a0a1] ");
}

TEST_P(NastyImage, FinishesTwice)
{
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read();
        trace->finish();
        trace->finish();
    };
    expect("prepare:1 read:1/2[0102] finish:1 finish:1 ");
}

TEST_P(NastyImage, FinishesWithoutAPrepare)
{
    in_the_call = [](Trace* trace) { trace->finish(); };
    expect("finish:1 ");
}

TEST_P(NastyImage, ResetsInTheMiddle)
{
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read();
        trace->reset();
        trace->read();
        trace->read();
        trace->read();
        trace->finish();
        trace->reset();
    };
    expect("prepare:1 read:1/2[0102] reset:1 read:1/2[0102] read:1/2[0304] read:1/0[eeee] finish:1 reset:1 ");
    if (GetParam().prefix == nullptr)
        return;
    EXPECT_EQ(folder.read("side-img-10.bin"), GetParam().base ? "\x01\x02\x03\x04" : "\x01\x02\x01\x02\x03\x04");
}

TEST_P(NastyImage, ReadsBeyondTheEnd)
{
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        for (int i = 0; i < 4; ++i)
            trace->read();
    };
    expect("prepare:1 read:1/2[0102] read:1/2[0304] read:1/0[eeee] read:1/0[eeee] ");
}

TEST_P(NastyImage, PreparesAgainAfterAFinish)
{
    in_the_call = [](Trace* trace)
    {
        for (int i = 0; i < 3; ++i)
        {
            trace->prepare();
            trace->read(true);
            trace->finish();
        }
    };
    expect("prepare:1 read:1/2[0102]/2[a0a1] finish:1 prepare:1 read:1/2[0102]/2[a0a1] finish:1 "
           "prepare:1 read:1/2[0102]/2[a0a1] finish:1 ");
    if (GetParam().prefix != nullptr && !GetParam().base)
    {
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"side-attr-11.bin", "side-img-10.bin"}));
        EXPECT_EQ(folder.read("side-img-10.bin"), "\x01\x02");
    }
}

TEST_P(NastyImage, PreparesInTheMiddle)
{
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read();
        trace->prepare();
        trace->prepare();
        trace->read();
        trace->finish();
    };
    expect("prepare:1 read:1/2[0102] prepare:1 prepare:1 read:1/2[0102] finish:1 ");
}

TEST_P(NastyImage, KeepsAndReleasesBehindTheSession)
{
    in_the_call = [](Trace* trace) { trace->keep(); };
    behind_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read();
    };
    behind_the_session = [](Trace* trace)
    {
        trace->read();
        trace->release();
    };
    expect("keep:1 prepare:1 read:1/2[0102] read:1/2[0304] release ");
}

TEST_P(NastyImage, KeepsInTheMiddleAndReadsOn)
{
    in_the_call = [](Trace* trace)
    {
        trace->prepare();
        trace->read();
        trace->keep();
        trace->read();
    };
    behind_the_call = [](Trace* trace)
    {
        trace->reset();
        trace->read();
        trace->finish();
        trace->release();
    };
    expect("prepare:1 read:1/2[0102] keep:1 read:1/2[0304] reset:1 read:1/2[0102] finish:1 release ");
}

TEST_P(NastyImage, ReleasesTwice)
{
    in_the_call = [](Trace* trace) { trace->keep(); };
    behind_the_call = [](Trace* trace)
    {
        trace->release();
        trace->release();
    };
    expect("keep:1 release release ");
}

TEST_P(NastyImage, ReleasesTwiceWithinTheCallAndReadsOn)
{
    in_the_call = [](Trace* trace)
    {
        trace->keep();
        trace->release();
        trace->release();
        trace->prepare();
        trace->read();
        trace->finish();
    };
    expect("keep:1 release release prepare:1 read:1/2[0102] finish:1 ");
}

TEST_P(NastyImage, ReleasesWhatItHasNotKept)
{
    in_the_call = [](Trace* trace)
    {
        trace->release();
        trace->prepare();
        trace->read();
    };
    expect("release prepare:1 read:1/2[0102] ");
}

INSTANTIATE_TEST_SUITE_P(Modes, NastyImage,
                         testing::Values(Setting{"Transparent", nullptr, false},
                                         Setting{"TransparentWithFiles", "side", false}, Setting{"Base", nullptr, true},
                                         Setting{"BaseWithFiles", "side", true}),
                         [](const testing::TestParamInfo<Setting>& test) { return test.param.name; });

}  // namespace
