#pragma once

#include "callbacks/CbDispatcher.h"
#include "callbacks/CbFunction.h"
#include "editor/model/curves/CurveDisplay.h"
#include "editor/model/curves/CurveEditing.h"
#include "editor/model/document/Document.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// Which keys are selected, and edits of the document's curves as they are at its time: of one
/// channel's, or of the three together. Together means the same change to each: what is done to a
/// key is done to those at its x on the other curves, and a curve that has none there gets one,
/// which leaves its shape as it is.
///
/// A curve with keyframes keeps them: keys are added and removed in all of them, other edits are
/// made at the document's time.
///
/// What is selected is an editor's own and no step of the history; it stays with its keys when
/// curves change otherwise. Edits throw ValueError and std::invalid_argument (keyframes of other
/// numbers of keys), having changed nothing. User-interface thread.
class CurveEditor {
public:
    static constexpr int nbChannels = ControllerLink::nbChannels;
    using Selections = std::array<CurveEditing::Selection, nbChannels>;

    struct Key {
        int channel;
        std::size_t key;

        bool operator==(Key const&) const = default;
    };

    explicit CurveEditor(Document& editedDocument);

    Document& getDocument() const { return document; }
    CurvePoints getCurve(int channel) const { return document.getCurve(channel); }
    bool areAlike() const;

    // ---- What is edited ----

    /// A channel, or CurveDisplay::allChannels.
    int getChannel() const { return channel; }
    void setChannel(int newChannel);
    bool isEdited(int aChannel) const;

    /// The curve that numbers are shown of: the edited one, or the one touched last.
    int getLead() const { return channel == CurveDisplay::allChannels ? touched : channel; }

    // ---- What is selected ----

    CurveEditing::Selection const& getSelection(int aChannel) const;
    bool isSelected(Key const& key) const;
    bool hasSelection() const;

    /// How many keys are selected on the lead.
    std::size_t countSelected() const { return getSelection(getLead()).size(); }

    /// The only selected key: the lead's, and at most those at its side on other curves.
    std::optional<Key> getOnlyKey() const;

    void selectNone();
    void selectAll();
    void select(Key const& key);
    void toggle(Key const& key);
    void selectWithin(std::function<bool(GePoint2<float> const&)> const& isWithin);

    /// Goes to the next or previous key of the lead; false where there is none.
    bool selectNext();
    bool selectPrevious();

    // ---- Edits, a step each, or all together one while the document is dragging ----

    /// A key on each edited curve, where it leaves the shape as it is; they are selected.
    Key insertKey(int aChannel, float x);

    /// The same at an x for each channel.
    void insertKeys(std::array<float, nbChannels> const& xs);
    void removeSelected();
    void moveSelected(std::string const& label, CurveEditing::Move const& move);
    void setHandles(CurveEditing::Handles handles);
    void resetHandles();

    /// How the only key's handles hold together. Broken ones that lie as if they were not are so
    /// until something else is selected.
    CurveEditing::Handles getHandles() const;

    /// Gives each selected key an x or y: what `text` says, a sum that may name the key's own x and
    /// y. Returns why not, or nothing.
    enum class Coordinate { X, Y };
    std::string place(Coordinate coordinate, std::string const& text);

    /// Makes something else of each edited curve.
    void change(std::string const& label,
                std::function<CurvePoints(CurvePoints const&)> const& change);
    void swap(int one, int other);
    void reset();
    void resetAll();

    /// As the command line's --curve takes it: the curve's points; for all three, where they
    /// differ, a line each.
    std::string copy() const;

    /// Gives the edited curves, or all, what the text has for them.
    enum class Target { Edited, All };
    void paste(std::string const& text, Target target);

    /// Gives a curve for each channel to the edited ones.
    void put(std::string const& label, std::array<CurvePoints, nbChannels> const& curves);

    // ---- Drags, one step each. A change counts from where the drag began. ----

    void beginDrag(std::string const& label);

    /// Begins with a key of its own.
    void beginDragOfNew(int aChannel, float x);
    void dragSelected(CurveEditing::Move const& move);

    /// A handle of the only key; alone it leaves the other one where it is.
    enum class Other { Follows, Stays };
    void dragHandle(CurveEditing::Side side, float dx, float dy, Other other);

    /// Pulls both handles out of the only key, which stays.
    void pullHandles(float dx, float dy);
    void endDrag();
    void abandonDrag();

    /// Told when something else is edited or selected, and when a curve has changed. Subscribes
    /// until the handler leaves or dies, or the editor goes.
    void addHandler(CbHandler<CurveEditor const>* handler) { handlers.addHandler(handler); }

private:
    using State = Animated<CurvePoints>;
    using States = std::array<State, nbChannels>;

    /// Curves and what is selected on them.
    struct Edited {
        States states;
        Selections selections;
    };

    States getStates() const;
    CurvePoints getPoints(States const& states, int aChannel) const;
    void setPoints(States& states, int aChannel, CurvePoints const& points) const;
    void setStates(std::string const& label, States const& states);
    void insertInto(State& state, float x) const;
    void removeFrom(State& state, CurveEditing::Selection const& keys) const;
    Edited prepare() const;
    void apply(std::string const& label, Edited const& edited);
    void addCounterparts(int from);
    void setSelections(Selections const& keys);
    bool step(bool goesForward);
    void moveFrom(Edited edited, std::string const& label, CurveEditing::Move const& move);
    void refresh();
    void tell() { handlers.call(std::as_const(*this)); }

    Document& document;
    int channel;
    int touched = 0;
    Selections selections;  ///< rising
    bool areBroken = false; ///< the selected keys' handles, as they lie or not
    std::array<std::vector<float>, nbChannels> knownKeys;
    std::optional<Edited> dragStart;
    std::string dragLabel;
    CbDispatcher<CurveEditor const> handlers;
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { refresh(); }};
    CbFunction<double const> timeChanged{[this](double const&) { refresh(); }};
};
