// A project's text: refused, or a node whose own project says the same, bit for bit.

#include "runtime/project/Project.h"

#include "support/Expect.h"
#include "support/Tool.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static RCShdPtr<HostGraph> const graph = makeShared<HostGraph>();
    static RCShdPtr<HostNode> const pattern = graph->createNode(getTool());
    try {
        NodeValues const values =
            readProject({reinterpret_cast<char const*>(data), size}, *pattern);
        RCShdPtr<HostNode> const node = graph->loadNode(getTool(), values);
        std::string const saved = writeProject(*node);
        RCShdPtr<HostNode> const again = graph->loadNode(getTool(), readProject(saved, *pattern));
        expect(writeProject(*again) == saved, "a saved project is loaded as it was");
        graph->removeNode(node);
        graph->removeNode(again);
    } catch (ProjectError const& error) {
        expect(*error.what() != '\0', "a failure has a text");
    }
    return 0;
}
