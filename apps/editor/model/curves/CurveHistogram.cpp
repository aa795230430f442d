#include "editor/model/curves/CurveHistogram.h"

#include "editor/model/document/UserThread.h"
#include "pluginAPI/PiImageModifier.h"
#include "pluginAPI/PxRequestMgr.h"
#include "session/NodePart.h"
#include "session/ToolKeys.h"

#include <algorithm>
#include <limits>
#include <span>
#include <thread>
#include <utility>

namespace {

using Pixel = CoRgbaColorTyped<float>;
using Counts = std::shared_ptr<ValueCounts const>;
using HistogramKind = CurveDisplay::Histogram;

constexpr std::size_t nbChannels = 3;
constexpr std::size_t pixelsAtOnce = std::size_t{1} << 15U;
constexpr std::array sentChannels = {&Pixel::red, &Pixel::green, &Pixel::blue};

/// Both bounds of every channel's counted values, one after the other.
std::vector<Pixel> listBounds(ValueCounts const& counts)
{
    std::size_t most = 0;
    for (auto const& counted : counts.channels) {
        most = std::max(most, counted.size());
    }
    std::vector<Pixel> bounds(2 * most);
    for (std::size_t channel = 0; channel < nbChannels; ++channel) {
        std::vector<CountedValues> const& counted = counts.channels[channel];
        for (std::size_t index = 0; index < counted.size(); ++index) {
            bounds[2 * index].*sentChannels[channel] = counted[index].low;
            bounds[2 * index + 1].*sentChannels[channel] = counted[index].high;
        }
    }
    return bounds;
}

/// What becomes of counted values; null where it is cancelled.
Counts sendCounts(ValueCounts const& source, PixelChain const& chain, double time,
                  std::atomic<bool> const& cancelled)
{
    std::vector<Pixel> const bounds = listBounds(source);
    std::vector<Pixel> sent;
    for (std::size_t begin = 0; begin < bounds.size(); begin += pixelsAtOnce) {
        if (cancelled) {
            return nullptr;
        }
        std::size_t const size = std::min(pixelsAtOnce, bounds.size() - begin);
        auto const part = chain.send(std::span(bounds).subspan(begin, size), time);
        sent.insert(sent.end(), part.begin(), part.end());
    }
    auto const made = std::make_shared<ValueCounts>();
    made->nans = source.nans;
    made->infinities = source.infinities;
    for (std::size_t channel = 0; channel < nbChannels; ++channel) {
        std::vector<CountedValues> const& counted = source.channels[channel];
        for (std::size_t index = 0; index < counted.size(); ++index) {
            made->add(channel, {sent[2 * index].*sentChannels[channel],
                                sent[2 * index + 1].*sentChannels[channel], counted[index].count});
        }
    }
    return made;
}

std::optional<CurveHistogram::Extent> measure(ValueCounts const& counts)
{
    CurveHistogram::Extent extent{};
    for (std::size_t channel = 0; channel < nbChannels; ++channel) {
        float low = std::numeric_limits<float>::infinity();
        float high = -low;
        for (CountedValues const& counted : counts.channels[channel]) {
            low = std::min({low, counted.low, counted.high});
            high = std::max({high, counted.low, counted.high});
        }
        if (!(low <= high)) {
            return {};
        }
        extent.low[channel] = low;
        extent.high[channel] = high;
    }
    return extent;
}

} // namespace

/// Counts and sends aside. It ends before what it uses: who lets it go joins its thread.
class CurveHistogram::Work {
public:
    explicit Work(CurveHistogram& histogram)
        : chain(histogram.chain), picture(histogram.picture), source(histogram.source),
          isSent(histogram.kind == HistogramKind::Transferred ||
                 histogram.kind == HistogramKind::Result),
          time(histogram.document.getTime())
    {
    }
    ~Work() { cancel(); }
    void cancel() { cancelled = true; }

    void begin(std::weak_ptr<void> const& self, CurveHistogram& histogram)
    {
        thread = std::jthread([this, self, &histogram] {
            PxWorkerScope const worker;
            try {
                source = source ? source : countValues(*picture, cancelled);
                made = source && isSent ? sendCounts(*source, chain, time, cancelled) : source;
                isDone = !cancelled;
            } catch (...) { // the picture's render says why
            }
            callOnUserThread(self, [&histogram] { histogram.end(); });
        });
    }

    PixelChain const& chain;
    std::shared_ptr<HeldPicture const> picture;
    Counts source;
    Counts made;
    bool isDone = false;

private:
    bool isSent;
    double time;
    std::atomic<bool> cancelled = false;
    std::jthread thread; // the others outlive it
};

CurveHistogram::CurveHistogram(Document& shownDocument, Plate& shownPlate)
    : document(shownDocument), plate(shownPlate), copy(document.getNode().getTool()),
      chain(copy.getNode())
{
    document.getNode().addHandler(&changed);
    document.addTimeHandler(&timeChanged);
    plate.addHandler(&plateChanged);
}

CurveHistogram::~CurveHistogram()
{
    work.reset();
}

CurveHistogram::Classes const& CurveHistogram::classify(FigureAxis const& axis,
                                                        std::size_t nbClasses) const
{
    bool const isKnown = classified.has_value() && classified->counts == counts &&
                         classified->axis.low == axis.low && classified->axis.high == axis.high &&
                         classified->axis.unit == axis.unit &&
                         classified->classes.histogram.getCounts()[0].size() == nbClasses;
    if (isKnown) {
        return classified->classes;
    }
    Classes classes{AxisHistogram(axis, nbClasses)};
    for (std::size_t channel = 0; channel < nbChannels; ++channel) {
        for (CountedValues const& values : counts->channels[channel]) {
            bool const hasStop = values.low > 0.0F && values.high > 0.0F;
            classes.withoutStop[channel] += hasStop ? 0.0 : values.count;
            classes.histogram.add(channel, values.low, values.high, values.count);
        }
    }
    classified = Classified{counts, axis, std::move(classes)};
    return classified->classes;
}

/// What the histogram depends on besides plate and moment.
NodeValues CurveHistogram::listValues() const
{
    NodeValues values;
    if (kind == HistogramKind::Transferred) {
        values = NodePart::makeTransferValues(document.getNode(),
                                              document.getLink().getClampInputName());
    } else if (kind == HistogramKind::Result) {
        for (HostNode::ValueSlot const& slot : document.getNode().getValues()) {
            values.emplace(slot.name, *slot.value->getState());
        }
    }
    std::erase_if(values, [this](auto const& value) {
        bool const isCurve = value.first.starts_with(ToolKeys::adjustCurve);
        return kind == HistogramKind::Transferred && isCurve;
    });
    // What only editors store changes nothing.
    for (HostNode::ValueSlot const& slot : document.getNode().getValues()) {
        if (slot.isStored && slot.name != PiImageModifier::getMuteValueName()) {
            values.erase(slot.name);
        }
    }
    return values;
}

void CurveHistogram::takePlate()
{
    picture = plate.getPicture();
    source.reset();
    stale = true;
    if (picture != nullptr) {
        request();
        return;
    }
    isWanted = false; // a gap in a sequence
    if (work) {
        work->cancel();
    }
    counts.reset();
    stale = false;
    handlers.call(std::as_const(*this));
}

void CurveHistogram::setPaused(bool newIsPaused)
{
    isPaused = newIsPaused;
    startIfWanted();
}

void CurveHistogram::startIfWanted()
{
    if (isWanted && !isPaused && !work) {
        start();
    }
}

void CurveHistogram::refresh()
{
    HistogramKind const wanted = readCurveDisplay(document.getLink()).histogram;
    bool const isOther = std::exchange(kind, wanted) != wanted;
    NodeValues values = listValues();
    double const now = document.getTime();
    bool const isSame = !isOther && now == time &&
                        std::equal(values.begin(), values.end(), used.begin(), used.end(),
                                   [](auto const& a, auto const& b) {
                                       return a.first == b.first && isSameState(a.second, b.second);
                                   });
    if (isSame) {
        return;
    }
    used = std::move(values);
    time = now;
    if (picture != nullptr) {
        stale = true;
        request();
    }
}

void CurveHistogram::request()
{
    isWanted = true;
    if (work) {
        work->cancel();
    }
    startIfWanted();
    handlers.call(std::as_const(*this));
}

void CurveHistogram::start()
{
    isWanted = false;
    kind = readCurveDisplay(document.getLink()).histogram;
    used = listValues();
    time = document.getTime();
    copy.getNode().setValues(used);
    work = std::make_shared<Work>(*this);
    work->begin(work, *this);
}

void CurveHistogram::end()
{
    std::shared_ptr<Work> const ended = std::exchange(work, nullptr);
    if (ended->source && ended->picture == picture && ended->source != source) {
        source = ended->source;
        extent = measure(*source);
    }
    if (!isWanted) {
        // None without memory for it, and none of the frame before at a gap of a sequence.
        counts = ended->isDone && ended->picture == picture ? ended->made : nullptr;
        stale = false;
    }
    startIfWanted();
    handlers.call(std::as_const(*this));
}
