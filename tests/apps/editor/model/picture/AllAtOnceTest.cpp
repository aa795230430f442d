// Frames play while a curve is dragged and pixels are picked, with all that works aside of it.

#include "apps/editor/ShotFixture.h"
#include "editor/model/curves/CurveModel.h"
#include "editor/model/document/Recovery.h"
#include "editor/model/picture/ViewRenderer.h"
#include "editor/model/time/Player.h"
#include "runtime/project/Project.h"

namespace {

using Stage = ViewRenderer::Stage;

/// A renderer with the image that it has shown last.
struct View {
    explicit View(Document const& document)
        : renderer(document.getNode().getTool(), 2,
                   {[this](auto, auto const& image, Stage newStage) {
                        pixels = image->pixels;
                        time = image->time;
                        stage = newStage;
                    },
                    [](auto const& failure) { std::rethrow_exception(failure); }, [] {}})
    {
    }

    std::vector<std::uint32_t> pixels;
    double time = -1.0;
    Stage stage = Stage::Overtaken;
    ViewRenderer renderer;
};

class AllAtOnceTest : public ShotFixture {
protected:
    AllAtOnceTest()
    {
        writeShot({1, 2, 3, 4, 5, 6, 7, 8});
        write("still.exr", 32);
        plate.addHandler(&told);
        document.getNode().addHandler(&changed);
        picks.add({1, 1, 2, 2});
        picks.add({3, 3, 30, 40});
        open("shot.####.exr");
    }
    ~AllAtOnceTest() noexcept override { EvEventManager::getInstance().discardEvents(); }

    void open(std::string const& name)
    {
        plate.open(file(name));
        waitUntil([this] { return !plate.isReading(); });
    }
    static void request(View& view, Document const& document, Plate const& plate)
    {
        if (plate.getPicture() != nullptr) {
            view.renderer.request({.grid = {0.0, 0.0, 2.0, 18, 26},
                                   .time = static_cast<double>(plate.getShownFrame())},
                                  document.getNode());
        }
    }

    /// A move of each hand.
    void move()
    {
        ++nbMoves;
        int const place = nbMoves % 30;
        if (nbMoves % 16 == 1) {
            curves.editor.selectNone();
            curves.editor.beginDragOfNew(nbMoves % 3, 0.3F);
        }
        curves.editor.dragSelected({0.0F, static_cast<float>(place) / 60.0F});
        if (nbMoves % 16 == 0) {
            nbMoves % 32 == 0 ? curves.editor.abandonDrag() : curves.editor.endDrag();
            recovery.keep({writeProject(document.getNode()), {}, {}, plate.getFile(), "now"});
        }
        picks.hover(place, place);
        picks.move(1, {place, 7, place + 1, 8});
        if (nbMoves % 8 == 0) {
            picks.move(2, {place, 3, 35, 40});
        }
    }

    Document document;
    Plate plate{2, 4 * frameBytes};
    Timeline timeline{document, plate};
    Picks picks{document, plate};
    CurveModel curves{document, plate, picks};
    View view{document};
    Recovery recovery{file("recovery"), [](std::string const& failure) { FAIL() << failure; }};
    Player::Clock::time_point now{};
    Player player{
        timeline, document, plate, {[this] { return now; }, [this](auto time) { now += time; }}};
    int nbMoves = 0;
    CbFunction<ValueChange const> changed{
        [this](ValueChange const&) { request(view, document, plate); }};
    CbFunction<PlateNotice const> told{[this](PlateNotice const& notice) {
        if (!notice.failure) {
            view.renderer.setPicture(plate.getPicture());
            request(view, document, plate);
        }
    }};
};

} // namespace

TEST_F(AllAtOnceTest, WhatIsShownInTheEndIsWhatIsShownInPeace)
{
    for (int round = 0; round < 4; ++round) {
        player.play(round % 2 == 0 ? 1 : -1);
        for (int frame = 0; frame < 12; ++frame) {
            double const before = timeline.getTime();
            player.wake();
            waitUntil([&] { // play goes on however often the hands move
                move();
                player.takeShown(view.time);
                return view.time != before && view.time == timeline.getTime();
            });
        }
        open("still.exr");
        plate.open(file("shot.0005.exr"));
        move();
        plate.giveUp();
        open("shot.####.exr");
    }
    player.stop();
    curves.editor.endDrag();
    auto const isKnown = [](Picks const& all) {
        return std::ranges::all_of(all.getPicks(),
                                   [](Pick const& pick) { return pick.out.has_value(); });
    };
    waitUntil([&] {
        return view.stage == Stage::Final && !view.renderer.isBusy() && isKnown(picks) &&
               !curves.histogram.isStale();
    });
    View fresh(document);
    fresh.renderer.setPicture(plate.getPicture());
    request(fresh, document, plate);
    Picks asked(document, plate);
    for (Pick const& pick : picks.getPicks()) {
        asked.add(pick.place);
    }
    waitUntil([&] { return fresh.stage == Stage::Final && isKnown(asked); });
    EXPECT_EQ(view.pixels, fresh.pixels);
    for (Pick const& pick : picks.getPicks()) {
        EXPECT_EQ(pick.out->mean.green, asked.find(pick.number)->out->mean.green) << pick.number;
    }
}
