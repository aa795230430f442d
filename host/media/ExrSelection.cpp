// Which parts and layers of an EXR file are processed.

#include "media/ExrSelection.h"

#include "media/ErrorText.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <set>

namespace {

using Path = std::filesystem::path;

/// Layers by part.
using Wanted = std::map<std::size_t, std::set<std::string>>;

std::string listParts(ExrHeaders const& headers)
{
    std::vector<std::string> names;
    for (ExrHeader const& part : headers.parts) {
        names.push_back(part.header.hasName() ? part.header.name() : std::to_string(names.size()));
    }
    return quoteList(names);
}

/// A name goes before a number.
std::size_t findPart(ExrHeaders const& headers, std::string const& wanted, Path const& file)
{
    for (std::size_t part = 0; part < headers.parts.size(); ++part) {
        Imf::Header const& header = headers.parts[part].header;
        if (header.hasName() && header.name() == wanted) {
            return part;
        }
    }
    std::size_t number = 0;
    char const* const end = wanted.data() + wanted.size();
    auto const [stop, failure] = std::from_chars(wanted.data(), end, number);
    if (failure != std::errc() || stop != end || number >= headers.parts.size()) {
        throwReadError(ImageFailure::Request, file,
                       "it has no part " + quoteName(wanted) + "; there are " + listParts(headers) +
                           ", numbered from 0");
    }
    return number;
}

template <typename Suits>
std::optional<std::size_t> findFirst(ExrHeaders const& headers, Suits const& suits)
{
    auto const found =
        std::find_if(headers.parts.begin(), headers.parts.end(), [&suits](ExrHeader const& part) {
            return !part.isDeep && suits(part.header);
        });
    return found == headers.parts.end()
               ? std::nullopt
               : std::optional(static_cast<std::size_t>(found - headers.parts.begin()));
}

/// The first part with colour, or else with alpha, of the layer; that of any layer for "".
std::size_t findPartOf(ExrHeaders const& headers, std::string const& layer, Path const& file)
{
    std::optional<std::size_t> part;
    if (layer.empty()) {
        part = findFirst(headers, hasAnyColour);
    }
    if (!part.has_value()) {
        part = findFirst(headers,
                         [&layer](Imf::Header const& header) { return hasLayer(header, layer); });
    }
    if (part.has_value() || headers.parts.size() == 1) {
        return part.value_or(0); // choosing its colour says what is wrong
    }
    if (std::all_of(headers.parts.begin(), headers.parts.end(),
                    [](ExrHeader const& one) { return one.isDeep; })) {
        throwDeep(file);
    }
    throwReadError(layer.empty() ? ImageFailure::File : ImageFailure::Request, file,
                   (layer.empty()
                        ? "none of its parts has colour"
                        : "none of its parts has a layer " + quoteName(layer) + " with colour") +
                       "; there are " + listParts(headers));
}

/// Every layer of every part in question.
Wanted findFull(ExrHeaders const& headers, ReadOptions const& options, Path const& file)
{
    Wanted wanted;
    for (std::size_t part = 0; part < headers.parts.size(); ++part) {
        ExrHeader const& header = headers.parts[part];
        bool const isMeant = options.part.empty() || findPart(headers, options.part, file) == part;
        std::vector<std::string> const layers = listFullLayers(header.header);
        if (!isMeant || header.isDeep || layers.empty()) {
            continue;
        }
        if (options.everyLayer) {
            wanted[part].insert(layers.begin(), layers.end());
        } else {
            wanted[part] = {""};
        }
    }
    if (wanted.empty()) {
        throwReadError(ImageFailure::Request, file,
                       "no layer of it has red, green and blue of half or float");
    }
    return wanted;
}

Wanted findNamed(ExrHeaders const& headers, ReadOptions const& options, Path const& file)
{
    Wanted wanted;
    std::set<std::string> const layers(options.layers.begin(), options.layers.end());
    for (std::string const& layer : layers.empty() ? std::set<std::string>{""} : layers) {
        if (options.everyPart) {
            bool isFound = false;
            for (std::size_t part = 0; part < headers.parts.size(); ++part) {
                if (!headers.parts[part].isDeep && hasLayer(headers.parts[part].header, layer)) {
                    wanted[part].insert(layer);
                    isFound = true;
                }
            }
            if (!isFound) {
                findPartOf(headers, layer, file); // says what is wrong
            }
        } else {
            std::size_t const part = options.part.empty() ? findPartOf(headers, layer, file)
                                                          : findPart(headers, options.part, file);
            ExrHeader const& header = headers.parts[part];
            if (!options.part.empty() && layer.empty() && !header.isDeep &&
                !hasLayer(header.header, layer)) {
                throwReadError(ImageFailure::Request, file,
                               "its part " + namePart(headers, part) +
                                   " has no channels of colour; choose another");
            }
            wanted[part].insert(layer);
        }
    }
    return wanted;
}

/// The first that has the channel, where one is asked for.
std::size_t findMaskPart(ExrHeaders const& headers, ReadOptions const& options, Path const& file)
{
    std::string const layer = options.layers.empty() ? "" : options.layers.front();
    if (!options.part.empty()) {
        return findPart(headers, options.part, file);
    }
    std::string const prefix = layer.empty() ? "" : layer + ".";
    std::string const name = prefix + *options.maskChannel;
    auto const named = findFirst(headers, [&](Imf::Header const& header) {
        return !options.maskChannel->empty() && header.channels().findChannel(name) != nullptr;
    });
    auto const usual = named.has_value() ? named : findFirst(headers, [&](auto const& header) {
        return hasLayer(header, layer);
    });
    auto const any =
        usual.has_value() ? usual : findFirst(headers, [](auto const&) { return true; });
    if (!any.has_value()) {
        throwDeep(file);
    }
    return *any;
}

} // namespace

std::vector<ExrSelectedPart> selectExr(ExrHeaders const& headers, ReadOptions const& options,
                                       Path const& file)
{
    std::vector<ExrSelectedPart> selected;
    if (options.maskChannel.has_value()) {
        std::size_t const part = findMaskPart(headers, options, file);
        if (headers.parts[part].isDeep) {
            throwDeep(file);
        }
        Imf::Header const& header = headers.parts[part].header;
        std::string const layer = options.layers.empty() ? "" : options.layers.front();
        selected.push_back({part, {chooseExrMask(header, layer, *options.maskChannel, file)}, {}});
    } else {
        bool const isFull = options.everyLayer || (options.everyPart && options.layers.empty());
        Wanted const wanted =
            isFull ? findFull(headers, options, file) : findNamed(headers, options, file);
        for (auto const& [part, layers] : wanted) {
            if (headers.parts[part].isDeep) {
                throwDeep(file);
            }
            ExrSelectedPart& one = selected.emplace_back();
            one.part = part;
            for (std::string const& layer : layers) {
                ExrColour const colour = chooseExrColour(headers.parts[part].header, layer, file);
                bool const isKnown =
                    std::any_of(one.layers.begin(), one.layers.end(), [&](ExrColour const& known) {
                        return known.prefix == colour.prefix;
                    });
                if (!isKnown) {
                    one.layers.push_back(colour);
                }
            }
        }
    }
    for (ExrSelectedPart& one : selected) {
        one.further = findFurtherChannels(headers.parts[one.part].header.channels(), one.layers);
    }
    return selected;
}
