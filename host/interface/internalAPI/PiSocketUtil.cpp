#include "internalAPI/PiSocketUtil.h"

RCShdPtr<PiInput> PiSocketUtil::getInput(RCShdPtr<PiNode> const& node, std::string const& fullName)
{
    std::size_t dot = fullName.find('.');
    RCShdPtr<PiInput> input = node->findInput(fullName.substr(0, dot), false);
    while (!input.isNull() && dot != std::string::npos) {
        std::size_t const start = dot + 1;
        dot = fullName.find('.', start);
        auto const structure = castShared<PiStructuredInput>(input);
        input = structure->findMember(fullName.substr(start, dot - start), false);
    }
    return input;
}
