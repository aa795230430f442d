// Which layers and parts of a file are meant.

#include "remapcolor/options/LayerOptions.h"

#include "remapcolor/options/CommandOptions.h"
#include "session/Failures.h"

namespace {

constexpr char const* everything = "all";

void addLayer(std::string const& text, LayerCount count, ReadOptions& read)
{
    if (count == LayerCount::One && text == everything) {
        throw UsageError("--layer takes the name of one layer here, not \"all\"");
    }
    if (count == LayerCount::One) {
        read.layers.clear();
    }
    if (text == everything) {
        read.everyLayer = true;
    } else {
        read.layers.push_back(text);
    }
    if (read.everyLayer && !read.layers.empty()) {
        throw UsageError("--layer all and --layer " + read.layers.front() +
                         " contradict each other; give one of them");
    }
}

void setPart(std::string const& text, LayerCount count, ReadOptions& read)
{
    if (text.empty()) {
        throw UsageError("--part takes a part's name or number, from 0");
    }
    read.everyPart = text == everything;
    if (count == LayerCount::One && read.everyPart) {
        throw UsageError("--part takes the name or number of one part here, not \"all\"");
    }
    read.part = read.everyPart ? "" : text;
}

} // namespace

void addLayerOptions(CommandOptions& options, LayerCount count, ReadOptions& read)
{
    bool const isOne = count == LayerCount::One;
    options.addOption("--layer", "NAME",
                      isOne ? "Take the channels NAME.R, NAME.G, NAME.B"
                            : "Process the channels NAME.R, NAME.G, NAME.B, or all\n\n"
                              "Several times for several layers; the word all for every layer "
                              "of every part (or of the one chosen by --part) that has red, green "
                              "and blue.",
                      [count, &read](std::string const& text) { addLayer(text, count, read); });
    options.addOption("--part", "N|NAME",
                      isOne ? "Of this part, by name or number from 0"
                            : "Process this part, by name or number from 0, or all\n\n"
                              "The first part with colour is the default; the word all is for "
                              "every part with red, green and blue. Other parts are copied as they "
                              "are.",
                      [count, &read](std::string const& text) { setPart(text, count, read); });
}
