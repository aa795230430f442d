// A curve as it is typed: refused with a word, or a curve whose keys are shown as they are read.

#include "runtime/curves/CurveShapes.h"
#include "runtime/curves/CurveText.h"
#include "runtime/values/HostValue.h"
#include "support/Expect.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string_view const text(reinterpret_cast<char const*>(data), size);
    try {
        CurvePoints const points = parseCurve("fuzz", text);
        expect(points.size() >= 6 && points.size() % 3 == 0, "three points for each of two keys");
        checkCurvePoints("fuzz", points);
        std::string const keys = formatCurveKeys(points);
        expect(formatCurveKeys(parseCurve("fuzz", keys)) == keys, "keys are read as shown");
    } catch (ValueError const& error) {
        expect(std::string_view(error.what()).find("fuzz") != std::string_view::npos,
               "the text says where");
    }
    return 0;
}
