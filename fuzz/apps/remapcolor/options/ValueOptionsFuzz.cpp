// Options for values, one a line; a line that starts with a colon is one for curves. They are
// refused, or the node takes what they say and shows it in a form that is read again.

#include "remapcolor/options/ValueOptions.h"
#include "remapcolor/text/ValueText.h"
#include "runtime/values/TextParts.h"
#include "session/Failures.h"
#include "support/Expect.h"
#include "support/Tool.h"

#include <cstdint>

namespace {

std::vector<ValueSetting> readSettings(std::string_view text)
{
    std::vector<ValueSetting> settings;
    for (std::string_view const line : split(text, '\n')) {
        bool const isCurve = line.starts_with(':');
        settings.push_back({isCurve ? ValueSetting::Form::Curves : ValueSetting::Form::Named,
                            std::string(line.substr(isCurve ? 1 : 0))});
    }
    return settings;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static RCShdPtr<HostGraph> const graph = makeShared<HostGraph>();
    static RCShdPtr<HostNode> const pattern = graph->createNode(getTool());
    try {
        NodeValues const values =
            collectValues(*pattern, readSettings({reinterpret_cast<char const*>(data), size}));
        RCShdPtr<HostNode> const node = graph->createNode(getTool());
        node->setValues(values);
        for (auto const& [name, state] : values) {
            HostValue const& value = *node->getValue(name);
            expect(*value.getState() == state, "the node has what was asked for");
            expect(!formatValue(value).empty() || name == "Plot Color", "it is shown");
        }
        graph->removeNode(node);
    } catch (UsageError const& error) {
        expect(*error.what() != '\0', "a failure has a text");
    } catch (ValueError const& error) {
        expect(*error.what() != '\0', "a failure has a text");
    }
    return 0;
}
