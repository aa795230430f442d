#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"
#include "editor/model/picture/AreaSums.h"
#include "editor/model/picture/Plate.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

/// The values of a pick. Of a point, mean, least and greatest are its pixel.
struct PickValues {
    CoRgbaColorTyped<float> mean;
    CoRgbaColorTyped<float> least;
    CoRgbaColorTyped<float> greatest;
    /// Of an area: what mean, least and greatest leave out; they are NaN where nothing is left.
    std::uint64_t nans = 0;
    std::uint64_t infinities = 0;
};

/// A place of the plate whose values are shown before and after the tool.
struct Pick {
    int number = 0;                  ///< from 1
    GeRectangle<int> place{};        ///< one pixel or an area; perhaps beyond the data window
    std::optional<PickValues> in{};  ///< empty outside of the data window and until it is known
    std::optional<PickValues> out{}; ///< the same

    bool isArea() const { return place.getWidth() > 1 || place.getHeight() > 1; }
};

/// What has changed of the picks.
enum class PicksNotice {
    Places,  ///< how many there are, where they are, or which one is selected
    Values,  ///< what is known of them
    Hovered, ///< the pixel pointed at, its place or values
};

/// Up to four numbered picks and the pixel that is pointed at. They stay when the look, the moment
/// or the plate changes, and are asked for again. Points go through the controller one after the
/// other, since it answers the newest only; areas are summed up aside. User-interface thread.
class Picks {
public:
    static constexpr int most = 4;

    Picks(Document& editedDocument, Plate& shownPlate);

    /// By number.
    std::vector<Pick> const& getPicks() const { return picks; }
    Pick const* find(int number) const;

    /// Sets a pick with the lowest free number and selects it; when there is none, moves the
    /// selected one. `place` is not empty.
    void add(GeRectangle<int> const& place);
    void move(int number, GeRectangle<int> const& place);
    void remove(int number);
    void clear();

    /// One that is there, or 0 for none.
    void select(int number);
    int getSelected() const { return selected; }

    /// The pixel that is pointed at.
    void hover(int x, int y);
    void leave();
    std::optional<Pick> const& getHovered() const { return hovered; }

    /// Subscribes until the handler leaves or dies, or the picks go.
    void addHandler(CbHandler<PicksNotice const>* handler) { handlers.addHandler(handler); }

private:
    /// What the controller is asked for. A pick that has moved meanwhile takes no answer.
    struct Question {
        int number;
        GeRectangle<int> place;
        CoRgbaColorTyped<float> colour;
        double time;
        std::uint64_t sent; ///< the controller's number of it
    };

    Pick* findAny(int number);
    GeRectangle<int> findPixels(Pick const& pick) const;
    void readPlate(Pick& pick);
    void ask(int number);
    void askAll();
    std::optional<int> takeWaiting();
    void askNext();
    void send(Pick const& pick);
    void sum(Pick const& pick);
    void take(PickAnswer const& answer);
    bool isSumming() const;
    void tell(PicksNotice notice) { handlers.call(notice); }
    void tellValues(int number);

    Document& document;
    Plate& plate;
    std::vector<Pick> picks;
    std::optional<Pick> hovered; ///< its number is 0
    int selected = 0;

    PxStrongHndl<SourceImageNode> start; ///< of the chain that the controller asks
    PxStrongHndl<PxNode const> chain;
    std::deque<int> waiting; ///< numbers to be asked for, each once
    std::optional<Question> asked;
    std::unique_ptr<AreaSums> sums; ///< made when the first area is
    int summed = 0;                 ///< the number that they are busy with
    CbDispatcher<PicksNotice const> handlers;

    CbFunction<PickAnswer const> answered{[this](PickAnswer const& answer) { take(answer); }};
    CbFunction<ValueChange const> valueChanged{[this](ValueChange const&) { askAll(); }};
    CbFunction<double const> timeChanged{[this](double const&) { askAll(); }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const& notice) {
        if (!notice.failure) {
            askAll();
        }
    }};
};
