#include "editor/model/picture/PixelProbe.h"

#include <utility>

PixelProbe::PixelProbe(Document& editedDocument, Plate& shownPlate,
                       std::function<void()> readingChanged)
    : document(editedDocument), plate(shownPlate), changed(std::move(readingChanged))
{
    document.getLink().addPickHandler(&picked);
    plate.addHandler(&plateChanged);
}

void PixelProbe::takePlate()
{
    leave();
    start = makeNode<SourceImageNode>(plate.getPicture()->info);
    chain = document.getNode().buildChain(PxNodePtr<PxImageProtocol const>(start));
}

void PixelProbe::point(int x, int y)
{
    bool const isSame = reading.has_value() && reading->x == x && reading->y == y;
    reading = Reading{x, y, plate.getPicture()->getPixel(x, y),
                      isSame ? reading->out : std::optional<CoRgbaColorTyped<float>>()};
    pickTime = document.getTime();
    pick = document.getLink().processSinglePixel(PxTimeContext(pickTime), reading->in);
    changed();
}

void PixelProbe::leave()
{
    reading.reset();
    changed();
}

void PixelProbe::refresh()
{
    if (reading.has_value()) {
        point(reading->x, reading->y);
    }
}

void PixelProbe::take(PickAnswer const& answer)
{
    if (reading.has_value() && answer.pick == pick && answer.outcome == PickAnswer::Done) {
        reading->out =
            document.getNode().finishPixel(PxTimeContext(pickTime), reading->in, answer.result);
        changed();
    }
}
