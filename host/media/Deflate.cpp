#include "media/Deflate.h"

#include <array>
#include <libdeflate.h>
#include <memory>
#include <new>

namespace {

constexpr std::size_t nbLevels = 13; // from 0

struct Free {
    void operator()(libdeflate_compressor* tool) const { libdeflate_free_compressor(tool); }
    void operator()(libdeflate_decompressor* tool) const { libdeflate_free_decompressor(tool); }
};

template <typename Tool, typename Make>
Tool* getTool(std::unique_ptr<Tool, Free>& tool, Make const& make)
{
    if (tool == nullptr) {
        tool.reset(make());
    }
    return tool != nullptr ? tool.get() : throw std::bad_alloc();
}

} // namespace

std::size_t deflateBytes(std::span<std::byte const> bytes, std::span<std::byte> packed, int level)
{
    thread_local std::array<std::unique_ptr<libdeflate_compressor, Free>, nbLevels> compressors;
    libdeflate_compressor* const tool =
        getTool(compressors.at(static_cast<std::size_t>(level)),
                [level] { return libdeflate_alloc_compressor(level); });
    return libdeflate_zlib_compress(tool, bytes.data(), bytes.size(), packed.data(), packed.size());
}

bool inflateBytes(std::span<std::byte const> packed, std::span<std::byte> bytes)
{
    thread_local std::unique_ptr<libdeflate_decompressor, Free> decompressor;
    libdeflate_decompressor* const tool =
        getTool(decompressor, [] { return libdeflate_alloc_decompressor(); });
    return libdeflate_zlib_decompress(tool, packed.data(), packed.size(), bytes.data(),
                                      bytes.size(), nullptr) == LIBDEFLATE_SUCCESS;
}
