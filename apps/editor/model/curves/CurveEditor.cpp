// Edits of the document's curves.

#include "editor/model/curves/CurveEditor.h"

#include "editor/model/parameters/NumberExpression.h"
#include "runtime/curves/CurveSetText.h"
#include "runtime/curves/CurveText.h"
#include "runtime/values/Keyframes.h"
#include "runtime/values/NumberText.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace {

using CurveEditing::Handles;
using CurveEditing::Move;
using CurveEditing::Selection;
using CurveEditing::Side;

std::size_t toIndex(int channel)
{
    return static_cast<std::size_t>(channel);
}

/// Keeps them rising and each at most once.
void addTo(Selection& keys, std::size_t key)
{
    auto const place = std::lower_bound(keys.begin(), keys.end(), key);
    if (place == keys.end() || *place != key) {
        keys.insert(place, key);
    }
}

std::vector<float> listKeys(CurvePoints const& points)
{
    std::vector<float> xs;
    for (std::size_t key = 0; key < CurveEditing::countKeys(points); ++key) {
        xs.push_back(CurveEditing::getKey(points, key).x);
    }
    return xs;
}

std::string nameKeys(std::string const& verb, std::size_t count)
{
    return verb + (count == 1 ? " key" : " keys");
}

/// "Red" of "Adjust Curve.Red".
std::string nameChannel(ControllerLink const& link, int channel)
{
    std::string const name = link.getCurveInputName(channel);
    return name.substr(name.rfind('.') + 1);
}

std::vector<std::string> nameChannels(ControllerLink const& link)
{
    std::vector<std::string> names;
    for (int channel = 0; channel < CurveEditor::nbChannels; ++channel) {
        names.push_back(nameChannel(link, channel));
    }
    return names;
}

/// Why the keys cannot have these places.
std::string explainRefusal(CurvePoints const& points, Selection const& keys)
{
    if (keys.size() > 1) {
        return "the keys would change places; x+0.1 moves them all";
    }
    std::size_t const key = keys.front();
    std::string const below =
        key > 0 ? formatNumber(CurveEditing::getKey(points, key - 1).x) : std::string();
    std::string const above = key + 1 < CurveEditing::countKeys(points)
                                  ? formatNumber(CurveEditing::getKey(points, key + 1).x)
                                  : std::string();
    return below.empty()   ? "x is at most " + above + ", where the next key is"
           : above.empty() ? "x is at least " + below + ", where the key before it is"
                           : "x is from " + below + " to " + above + ", between the keys beside it";
}

} // namespace

CurveEditor::CurveEditor(Document& editedDocument)
    : document(editedDocument), channel(readCurveDisplay(document.getLink()).channel)
{
    document.getNode().addHandler(&changed);
    document.addTimeHandler(&timeChanged);
    refresh();
}

bool CurveEditor::areAlike() const
{
    return getCurve(0) == getCurve(1) && getCurve(0) == getCurve(2);
}

// ---- What is edited ----

void CurveEditor::setChannel(int newChannel)
{
    CurveDisplay display = readCurveDisplay(document.getLink());
    display.channel = newChannel;
    writeCurveDisplay(document, display);
}

bool CurveEditor::isEdited(int aChannel) const
{
    return channel == CurveDisplay::allChannels || channel == aChannel;
}

// ---- What is selected ----

Selection const& CurveEditor::getSelection(int aChannel) const
{
    return selections[toIndex(aChannel)];
}

bool CurveEditor::isSelected(Key const& key) const
{
    Selection const& keys = getSelection(key.channel);
    return std::binary_search(keys.begin(), keys.end(), key.key);
}

bool CurveEditor::hasSelection() const
{
    return std::any_of(selections.begin(), selections.end(),
                       [](Selection const& keys) { return !keys.empty(); });
}

std::optional<CurveEditor::Key> CurveEditor::getOnlyKey() const
{
    bool const hasSeveral = std::any_of(selections.begin(), selections.end(),
                                        [](Selection const& keys) { return keys.size() > 1; });
    Selection const& keys = getSelection(getLead());
    return keys.empty() || hasSeveral ? std::nullopt : std::optional(Key{getLead(), keys.front()});
}

void CurveEditor::selectNone()
{
    setSelections({});
    tell();
}

void CurveEditor::selectAll()
{
    selectWithin([](GePoint2<float> const&) { return true; });
}

void CurveEditor::select(Key const& key)
{
    setSelections({});
    touched = key.channel;
    selections[toIndex(key.channel)] = {key.key};
    addCounterparts(key.channel);
    tell();
}

void CurveEditor::toggle(Key const& key)
{
    touched = key.channel;
    if (!isSelected(key)) {
        addTo(selections[toIndex(key.channel)], key.key);
        addCounterparts(key.channel);
        tell();
        return;
    }
    float const x = CurveEditing::getKey(getCurve(key.channel), key.key).x;
    for (int other = 0; other < nbChannels; ++other) {
        CurvePoints const points = getCurve(other);
        std::erase_if(selections[toIndex(other)], [&](std::size_t candidate) {
            return other == key.channel ? candidate == key.key
                                        : CurveEditing::getKey(points, candidate).x == x;
        });
    }
    tell();
}

void CurveEditor::selectWithin(std::function<bool(GePoint2<float> const&)> const& isWithin)
{
    setSelections({});
    for (int edited = 0; edited < nbChannels; ++edited) {
        CurvePoints const points = getCurve(edited);
        for (std::size_t key = 0; isEdited(edited) && key < CurveEditing::countKeys(points);
             ++key) {
            if (isWithin(CurveEditing::getKey(points, key))) {
                selections[toIndex(edited)].push_back(key);
            }
        }
    }
    Selections const found = selections;
    for (int edited = 0; edited < nbChannels; ++edited) {
        if (!found[toIndex(edited)].empty()) {
            addCounterparts(edited);
            touched = getSelection(touched).empty() ? edited : touched;
        }
    }
    tell();
}

void CurveEditor::setSelections(Selections const& keys)
{
    areBroken = areBroken && keys == selections;
    selections = keys;
}

/// The keys of the other edited curves at the x of those that are selected on `from`.
void CurveEditor::addCounterparts(int from)
{
    CurvePoints const points = getCurve(from);
    Selection const keys = getSelection(from);
    for (int other = 0; other < nbChannels; ++other) {
        if (other == from || !isEdited(other)) {
            continue;
        }
        for (std::size_t const key : keys) {
            auto const there =
                CurveEditing::findKey(getCurve(other), CurveEditing::getKey(points, key).x,
                                      CurveEditing::getRank(points, key));
            if (there.has_value()) {
                addTo(selections[toIndex(other)], *there);
            }
        }
    }
}

bool CurveEditor::selectNext()
{
    return step(true);
}

bool CurveEditor::selectPrevious()
{
    return step(false);
}

bool CurveEditor::step(bool goesForward)
{
    int const lead = getLead();
    std::size_t const last = CurveEditing::countKeys(getCurve(lead)) - 1;
    Selection const& keys = getSelection(lead);
    if (keys.empty()) {
        select({lead, goesForward ? 0 : last});
        return true;
    }
    if (goesForward ? keys.back() >= last : keys.front() == 0) {
        return false;
    }
    select({lead, goesForward ? keys.back() + 1 : keys.front() - 1});
    return true;
}

/// After curves, the time or the channel have changed: a selected key is the one at its x.
void CurveEditor::refresh()
{
    int const shown = readCurveDisplay(document.getLink()).channel;
    if (shown != channel) {
        touched = channel == CurveDisplay::allChannels ? touched : channel;
        channel = shown;
        setSelections({});
    }
    for (int each = 0; each < nbChannels; ++each) {
        CurvePoints const points = getCurve(each);
        std::vector<float> const before = std::exchange(knownKeys[toIndex(each)], listKeys(points));
        if (before.size() == knownKeys[toIndex(each)].size()) {
            continue;
        }
        Selection kept;
        for (std::size_t const key : getSelection(each)) {
            auto const there = CurveEditing::findKey(points, before[key]);
            if (there.has_value()) {
                addTo(kept, *there);
            }
        }
        selections[toIndex(each)] = kept;
    }
    tell();
}

// ---- Edits ----

CurveEditor::States CurveEditor::getStates() const
{
    auto const get = [this](int each) {
        std::string const name = document.getLink().getCurveInputName(each);
        return std::get<State>(*document.getNode().getValue(name)->getState());
    };
    return {get(0), get(1), get(2)};
}

CurvePoints CurveEditor::getPoints(States const& states, int aChannel) const
{
    return states[toIndex(aChannel)].evaluate(document.getTime()).getValue();
}

void CurveEditor::setPoints(States& states, int aChannel, CurvePoints const& points) const
{
    if (points != getPoints(states, aChannel)) {
        State& state = states[toIndex(aChannel)];
        state = withValueAt(state, document.getTime(), points);
    }
}

void CurveEditor::setStates(std::string const& label, States const& states)
{
    NodeValues changed;
    States const before = getStates();
    for (int each = 0; each < nbChannels; ++each) {
        if (!isSameState(states[toIndex(each)], before[toIndex(each)])) {
            changed.emplace(document.getLink().getCurveInputName(each), states[toIndex(each)]);
        }
    }
    document.edit(label, changed);
}

void CurveEditor::insertInto(State& state, float x) const
{
    CurvePoints const points = state.evaluate(document.getTime()).getValue();
    state = state.isAnimated()
                ? withEachValue(state,
                                [&](CurvePoints const& other) {
                                    return CurveEditing::insertKeyAlike(other, points, x);
                                })
                : State(CurveEditing::insertKey(points, x).points);
}

void CurveEditor::removeFrom(State& state, Selection const& keys) const
{
    // What must stay at one time stays at all.
    Selection removed = keys;
    for (Keyframe<CurvePoints> const& frame : state.getKeys()) {
        removed = CurveEditing::limitRemoval(frame.value, removed);
    }
    state = withEachValue(state, [&](CurvePoints const& points) {
        return CurveEditing::removeKeys(points, removed);
    });
}

/// The curves with a selected key on each edited one wherever the lead has one.
CurveEditor::Edited CurveEditor::prepare() const
{
    Edited edited{getStates(), selections};
    std::vector<float> xs;
    CurvePoints const leading = getPoints(edited.states, getLead());
    for (std::size_t const key : getSelection(getLead())) {
        xs.push_back(CurveEditing::getKey(leading, key).x);
    }
    for (int each = 0; each < nbChannels; ++each) {
        Selection& keys = edited.selections[toIndex(each)];
        bool const isMissing = keys.size() < xs.size() && isEdited(each);
        for (std::size_t index = 0; isMissing && index < xs.size(); ++index) {
            CurvePoints const points = getPoints(edited.states, each);
            bool const isThere = std::any_of(keys.begin(), keys.end(), [&](std::size_t key) {
                return CurveEditing::getKey(points, key).x == xs[index];
            });
            if (isThere) {
                continue;
            }
            auto const [inserted, place] = CurveEditing::insertKey(points, xs[index]);
            if (inserted.size() != points.size()) {
                insertInto(edited.states[toIndex(each)], xs[index]);
                for (std::size_t& key : keys) {
                    key += key >= place ? 1 : 0;
                }
            }
            addTo(keys, place);
        }
    }
    return edited;
}

void CurveEditor::apply(std::string const& label, Edited const& edited)
{
    setStates(label, edited.states);
    setSelections(edited.selections);
    tell();
}

CurveEditor::Key CurveEditor::insertKey(int aChannel, float x)
{
    touched = aChannel;
    insertKeys({x, x, x});
    return {aChannel, getSelection(aChannel).front()};
}

void CurveEditor::insertKeys(std::array<float, nbChannels> const& xs)
{
    Edited edited{getStates(), {}};
    for (int each = 0; each < nbChannels; ++each) {
        float const x = xs[toIndex(each)];
        if (isEdited(each) && std::isfinite(x)) {
            std::size_t const place =
                CurveEditing::insertKey(getPoints(edited.states, each), x).key;
            insertInto(edited.states[toIndex(each)], x);
            edited.selections[toIndex(each)] = {place};
        }
    }
    apply("Add key", edited);
}

void CurveEditor::removeSelected()
{
    if (!hasSelection()) {
        return;
    }
    States states = getStates();
    for (int each = 0; each < nbChannels; ++each) {
        if (!getSelection(each).empty()) {
            removeFrom(states[toIndex(each)], getSelection(each));
        }
    }
    apply(nameKeys("Remove", countSelected()), {states, {}});
}

void CurveEditor::moveFrom(Edited edited, std::string const& label, Move const& move)
{
    // What stops one curve's keys stops all.
    Move allowed = move;
    for (int each = 0; each < nbChannels; ++each) {
        allowed = CurveEditing::limitMove(getPoints(edited.states, each),
                                          edited.selections[toIndex(each)], allowed);
    }
    for (int each = 0; each < nbChannels; ++each) {
        setPoints(edited.states, each,
                  CurveEditing::moveKeys(getPoints(edited.states, each),
                                         edited.selections[toIndex(each)], allowed));
    }
    apply(label, edited);
}

void CurveEditor::moveSelected(std::string const& label, Move const& move)
{
    if (hasSelection()) {
        moveFrom(prepare(), nameKeys(label, countSelected()), move);
    }
}

Handles CurveEditor::getHandles() const
{
    auto const only = getOnlyKey();
    return areBroken || !only.has_value()
               ? Handles::Broken
               : CurveEditing::classifyHandles(getCurve(only->channel), only->key);
}

void CurveEditor::setHandles(Handles handles)
{
    if (!hasSelection()) {
        return;
    }
    areBroken = handles == Handles::Broken;
    if (areBroken) {
        tell();
        return;
    }
    Edited edited = prepare();
    for (int each = 0; each < nbChannels; ++each) {
        setPoints(edited.states, each,
                  CurveEditing::setHandles(getPoints(edited.states, each),
                                           edited.selections[toIndex(each)], handles));
    }
    apply("Change handles", edited);
}

void CurveEditor::resetHandles()
{
    if (!hasSelection()) {
        return;
    }
    Edited edited = prepare();
    for (int each = 0; each < nbChannels; ++each) {
        setPoints(edited.states, each,
                  CurveEditing::resetHandles(getPoints(edited.states, each),
                                             edited.selections[toIndex(each)]));
    }
    apply("Reset handles", edited);
}

std::string CurveEditor::place(Coordinate coordinate, std::string const& text)
{
    if (!hasSelection()) {
        return {};
    }
    Edited edited = prepare();
    for (int each = 0; each < nbChannels; ++each) {
        Selection const& keys = edited.selections[toIndex(each)];
        CurvePoints const points = getPoints(edited.states, each);
        std::vector<GePoint2<float>> places;
        for (std::size_t const key : keys) {
            GePoint2<float> place = CurveEditing::getKey(points, key);
            auto const number = evaluateExpression(text, {{'x', place.x}, {'y', place.y}});
            if (!number.has_value() || !std::isfinite(static_cast<float>(*number))) {
                return "“" + text + "” is no number or sum; x and y are the key's own";
            }
            (coordinate == Coordinate::X ? place.x : place.y) = static_cast<float>(*number);
            places.push_back(place);
        }
        if (keys.size() > 1 && coordinate == Coordinate::X && places.front().x == places.back().x) {
            return "several keys cannot have one x; x+0.1 moves them all";
        }
        auto const placed = CurveEditing::placeKeys(points, keys, places);
        if (!placed.has_value()) {
            return explainRefusal(points, keys);
        }
        setPoints(edited.states, each, *placed);
    }
    apply(nameKeys("Place", countSelected()), edited);
    return {};
}

void CurveEditor::change(std::string const& label,
                         std::function<CurvePoints(CurvePoints const&)> const& change)
{
    States states = getStates();
    for (int each = 0; each < nbChannels; ++each) {
        if (isEdited(each)) {
            setPoints(states, each, change(getPoints(states, each)));
        }
    }
    setStates(label, states);
}

void CurveEditor::swap(int one, int other)
{
    States states = getStates();
    std::swap(states[toIndex(one)], states[toIndex(other)]);
    setStates("Swap curves", states);
}

void CurveEditor::reset()
{
    if (channel == CurveDisplay::allChannels) {
        resetAll();
        return;
    }
    document.beginDrag("Reset curve");
    document.getLink().resetCurve(channel);
    document.endDrag();
}

void CurveEditor::resetAll()
{
    document.getLink().resetCurves();
}

std::string CurveEditor::copy() const
{
    if (channel != CurveDisplay::allChannels || areAlike()) {
        return formatCurve(getCurve(getLead()));
    }
    std::vector<std::string> const names = nameChannels(document.getLink());
    CurveSet curves;
    for (int each = 0; each < nbChannels; ++each) {
        curves.emplace(names[toIndex(each)], State(getCurve(each)));
    }
    return formatCurveSet(curves, names);
}

void CurveEditor::paste(std::string const& text, Target target)
{
    std::vector<std::string> const names = nameChannels(document.getLink());
    CurveSet const curves = parseCurveSet(text, names);
    States states = getStates();
    bool isUsed = false;
    for (int each = 0; each < nbChannels; ++each) {
        auto const curve = curves.find(names[toIndex(each)]);
        if (curve == curves.end() || (target == Target::Edited && !isEdited(each))) {
            continue;
        }
        isUsed = true;
        if (curve->second.isAnimated()) {
            states[toIndex(each)] = curve->second;
        } else {
            setPoints(states, each, curve->second.getKeys().front().value);
        }
    }
    if (!isUsed) {
        throw ValueError(curves.empty() ? "it is empty"
                                        : "it has no curve for " + names[toIndex(getLead())]);
    }
    setStates("Paste curve", states);
}

void CurveEditor::put(std::string const& label, std::array<CurvePoints, nbChannels> const& curves)
{
    States states = getStates();
    for (int each = 0; each < nbChannels; ++each) {
        if (isEdited(each)) {
            setPoints(states, each, curves[toIndex(each)]);
        }
    }
    setStates(label, states);
}

// ---- Drags ----

void CurveEditor::beginDrag(std::string const& label)
{
    document.beginDrag(label);
    dragLabel = label;
    dragStart = prepare();
}

void CurveEditor::beginDragOfNew(int aChannel, float x)
{
    document.beginDrag("Add key");
    dragLabel = "Add key";
    insertKey(aChannel, x);
    dragStart = prepare();
}

void CurveEditor::dragSelected(Move const& move)
{
    moveFrom(*dragStart, dragLabel, move);
}

void CurveEditor::dragHandle(Side side, float dx, float dy, Other other)
{
    Edited edited = *dragStart;
    for (int each = 0; each < nbChannels; ++each) {
        CurvePoints points = getPoints(edited.states, each);
        for (std::size_t const key : edited.selections[toIndex(each)]) {
            GePoint2<float> const from = CurveEditing::getCountingHandle(points, key, side);
            Handles const kind = CurveEditing::classifyHandles(points, key);
            bool const isAlone = other == Other::Stays || areBroken || kind == Handles::Broken;
            Handles const kept = kind == Handles::Mirrored ? kind : Handles::Smooth;
            points = CurveEditing::moveHandle(points, key, side, {from.x + dx, from.y + dy},
                                              isAlone ? Handles::Broken : kept);
        }
        setPoints(edited.states, each, points);
    }
    apply(dragLabel, edited);
}

void CurveEditor::pullHandles(float dx, float dy)
{
    Edited edited = *dragStart;
    Side const side = dx < 0.0F ? Side::Incoming : Side::Outgoing;
    for (int each = 0; each < nbChannels; ++each) {
        CurvePoints points = getPoints(edited.states, each);
        for (std::size_t const key : edited.selections[toIndex(each)]) {
            GePoint2<float> const from = CurveEditing::getKey(points, key);
            points = CurveEditing::moveHandle(points, key, side, {from.x + dx, from.y + dy},
                                              Handles::Mirrored);
        }
        setPoints(edited.states, each, points);
    }
    apply(dragLabel, edited);
}

void CurveEditor::endDrag()
{
    dragStart.reset();
    document.endDrag();
}

void CurveEditor::abandonDrag()
{
    dragStart.reset();
    document.abandonDrag();
}
