#include "editor/model/picture/Picks.h"

#include "base/Assertions.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

using Pixel = CoRgbaColorTyped<float>;

PickValues ofPoint(Pixel const& pixel)
{
    return {pixel, pixel, pixel};
}

PickValues ofArea(std::array<ChannelSummary, 4> const& channels)
{
    auto const collect = [&channels](auto const& get) {
        auto const value = [&](ChannelSummary const& channel) {
            return channel.values == 0 ? std::numeric_limits<float>::quiet_NaN() : get(channel);
        };
        return Pixel{value(channels[0]), value(channels[1]), value(channels[2]),
                     value(channels[3])};
    };
    PickValues values{collect([](auto const& channel) { return static_cast<float>(channel.mean); }),
                      collect([](auto const& channel) { return channel.least; }),
                      collect([](auto const& channel) { return channel.greatest; })};
    for (ChannelSummary const& channel : channels) {
        values.nans += channel.nans;
        values.infinities += channel.infinities;
    }
    return values;
}

} // namespace

Picks::Picks(Document& editedDocument, Plate& shownPlate)
    : document(editedDocument), plate(shownPlate)
{
    // The controller asks the node's chain whatever picture it starts with.
    ImageInfo info;
    info.dataWindow = {0, 0, 1, 1};
    start = makeNode<SourceImageNode>(info);
    chain = document.getNode().buildChain(PxNodePtr<PxImageProtocol const>(start));
    document.getLink().addPickHandler(&answered);
    document.getNode().addHandler(&valueChanged);
    document.addTimeHandler(&timeChanged);
    plate.addHandler(&plateChanged);
}

Pick const* Picks::find(int number) const
{
    auto const found = std::find_if(picks.begin(), picks.end(),
                                    [&](Pick const& pick) { return pick.number == number; });
    return found == picks.end() ? nullptr : &*found;
}

Pick* Picks::findAny(int number)
{
    if (number == 0) {
        return hovered.has_value() ? &*hovered : nullptr;
    }
    return const_cast<Pick*>(find(number));
}

void Picks::add(GeRectangle<int> const& place)
{
    if (picks.size() == most) {
        move(selected == 0 ? most : selected, place);
        return;
    }
    Pick pick{.number = 1, .place = place};
    auto before = picks.begin();
    for (; before != picks.end() && before->number == pick.number; ++before) {
        ++pick.number;
    }
    readPlate(pick);
    picks.insert(before, pick);
    selected = pick.number;
    tell(PicksNotice::Places);
    ask(pick.number);
}

void Picks::move(int number, GeRectangle<int> const& place)
{
    Pick* const pick = findAny(number);
    Assertions::check(pick != nullptr, "pick != nullptr");
    selected = number;
    if (!(pick->place == place)) {
        if (isSumming() && summed == number) {
            sums->cancel();
        }
        *pick = {.number = number, .place = place};
        readPlate(*pick);
        ask(number);
    }
    tell(PicksNotice::Places);
}

void Picks::remove(int number)
{
    std::erase_if(picks, [&](Pick const& pick) { return pick.number == number; });
    if (selected == number) {
        selected = picks.empty() ? 0 : picks.back().number;
    }
    tell(PicksNotice::Places);
}

void Picks::clear()
{
    picks.clear();
    selected = 0;
    tell(PicksNotice::Places);
}

void Picks::select(int number)
{
    if (number != selected) {
        selected = number;
        tell(PicksNotice::Places);
    }
}

void Picks::hover(int x, int y)
{
    GeRectangle<int> const place{x, y, x + 1, y + 1};
    if (hovered.has_value() && hovered->place == place) {
        return;
    }
    hovered = Pick{.number = 0, .place = place};
    readPlate(*hovered);
    tell(PicksNotice::Hovered);
    ask(0);
}

void Picks::leave()
{
    if (hovered.has_value()) {
        hovered.reset();
        tell(PicksNotice::Hovered);
    }
}

/// The part of its place that the plate has.
GeRectangle<int> Picks::findPixels(Pick const& pick) const
{
    auto const& picture = plate.getPicture();
    return picture == nullptr ? GeRectangle<int>{0, 0, 0, 0}
                              : intersect(pick.place, picture->info.dataWindow);
}

/// What is known of a new place at once.
void Picks::readPlate(Pick& pick)
{
    if (!pick.isArea() && !findPixels(pick).isEmpty()) {
        pick.in = ofPoint(plate.getPicture()->getPixel(pick.place.x0, pick.place.y0));
    }
}

void Picks::ask(int number)
{
    if (std::find(waiting.begin(), waiting.end(), number) == waiting.end()) {
        waiting.push_back(number);
    }
    askNext();
}

void Picks::askAll()
{
    if (hovered.has_value()) {
        ask(0);
    }
    for (std::size_t index = 0; index < picks.size(); ++index) {
        ask(picks[index].number);
    }
}

/// Whoever has waited longest, of points and areas each; 0 is the pixel that is pointed at.
std::optional<int> Picks::takeWaiting()
{
    auto const found = std::find_if(waiting.begin(), waiting.end(), [this](int number) {
        Pick const* const pick = findAny(number);
        bool const isIdle = pick == nullptr || findPixels(*pick).isEmpty();
        return isIdle || !(pick->isArea() ? isSumming() : asked.has_value());
    });
    if (found == waiting.end()) {
        return {};
    }
    int const number = *found;
    waiting.erase(found);
    return number;
}

void Picks::askNext()
{
    while (std::optional<int> const number = takeWaiting()) {
        Pick* const pick = findAny(*number);
        if (pick == nullptr) {
            continue;
        }
        if (findPixels(*pick).isEmpty()) {
            pick->in.reset();
            pick->out.reset();
            tellValues(*number);
        } else if (pick->isArea()) {
            sum(*pick);
        } else {
            send(*pick);
        }
    }
}

void Picks::send(Pick const& pick)
{
    Question question{pick.number, pick.place,
                      plate.getPicture()->getPixel(pick.place.x0, pick.place.y0),
                      document.getTime(), 0};
    question.sent =
        document.getLink().processSinglePixel(PxTimeContext(question.time), question.colour);
    asked = question;
}

void Picks::take(PickAnswer const& answer)
{
    if (!asked.has_value() || asked->sent != answer.pick) {
        return;
    }
    Question const question = *std::exchange(asked, {});
    Pick* const pick = findAny(question.number);
    if (pick == nullptr || !(pick->place == question.place) || findPixels(*pick).isEmpty()) {
        // Nobody's any more; at a gap of a sequence, that of the frame before.
    } else if (answer.outcome == PickAnswer::Overtaken) { // by another panel
        waiting.push_front(question.number);
    } else {
        pick->in = ofPoint(question.colour);
        pick->out.reset();
        if (answer.outcome == PickAnswer::Done) {
            pick->out = ofPoint(document.getNode().finishPixel(PxTimeContext(question.time),
                                                               question.colour, answer.result));
        }
        tellValues(pick->number);
    }
    askNext();
}

bool Picks::isSumming() const
{
    return sums != nullptr && sums->isBusy();
}

void Picks::sum(Pick const& pick)
{
    if (sums == nullptr) {
        sums = std::make_unique<AreaSums>(document.getNode().getTool());
    }
    summed = pick.number;
    sums->start(
        {plate.getPicture(), findPixels(pick), NodeStates(document.getNode()), document.getTime()},
        [this, number = pick.number, place = pick.place](auto const& found) {
            Pick* const asker = findAny(number);
            if (asker != nullptr && asker->place == place && !findPixels(*asker).isEmpty() &&
                found.has_value()) {
                asker->in = ofArea(found->in);
                asker->out = ofArea(found->out);
                tellValues(number);
            }
            askNext();
        });
}

void Picks::tellValues(int number)
{
    tell(number == 0 ? PicksNotice::Hovered : PicksNotice::Values);
}
