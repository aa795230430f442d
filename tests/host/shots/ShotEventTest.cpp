#include "shots/ShotEvent.h"

#include "shots/ShotPace.h"

#include <gtest/gtest.h>

TEST(ShotEventTest, LinesAreReadBackAsTheyWereWritten)
{
    using Kind = ShotEvent::Kind;
    for (Kind const kind : {Kind::Start, Kind::Frame, Kind::Skip, Kind::Note, Kind::Warning,
                            Kind::Error, Kind::End}) {
        ShotEvent event;
        event.kind = kind;
        bool const isOfShot = kind == Kind::Start || kind == Kind::End;
        event.frame = isOfShot ? std::nullopt : std::optional(-7.5);
        event.input = "in \"it\".exr";
        event.output = "out.exr";
        event.message = isOfShot || kind == Kind::Frame ? "" : "a\nb";
        event.frames = kind == Kind::Start ? "1-3" : "";
        event.total = 3;
        event.done = kind == Kind::Start ? 0 : 2;
        event.status = kind == Kind::Error || kind == Kind::End ? 3 : 0;
        if (kind == Kind::End) {
            event.summary = {3, 1, 1, {2}, {3, 1}, 12.5, {}};
        }
        auto const read = parseJson(formatJson(event));
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(formatJson(*read), formatJson(event));
        EXPECT_EQ(formatText(*read), formatText(event));
    }
    for (char const* const other : {"", "text", "[]", "{}", "{\"event\":\"look\",\"total\":1}",
                                    "{\"event\":\"frame\",\"total\":\"x\"}"}) {
        EXPECT_FALSE(parseJson(other).has_value()) << other;
    }
}

TEST(ShotPaceTest, RateAndTimeLeftFollowFromWhatIsDone)
{
    EXPECT_EQ(formatPace(0.0, 10, 0.0), "0/10, 0 %");
    EXPECT_EQ(formatPace(2.5, 10, 5.0), "2/10, 25 %, 0.5 frames/s, 0:15 left");
    EXPECT_EQ(formatPace(0.25, 1, 5.0), "25 %, 0:15 left");
    EXPECT_EQ(formatPace(1.0, 10'000, 1.0), "1/10000, 0 %, 1 frames/s, 2:46:39 left");
}
