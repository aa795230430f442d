#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Lists of frames, as people and schedulers write them. All functions may be called on any thread.

/// The number of a frame, which is its time too.
using Frame = std::int64_t;

/// Numbers beyond this, in either direction, are no frames: a double holds all up to it.
inline constexpr Frame largestFrame = 999'999'999'999'999;

/// The frames of a list such as "1-10,15,20-40x5,8-4,-3--1": single frames and ranges, with a step
/// after x, up or down, between commas or white space. In that order, each once. Throws ShotError
/// (Request) for anything else, an empty list and more than a million frames.
std::vector<Frame> parseFrames(std::string_view text);

/// The frames as a list that parseFrames takes, from the lowest to the highest: "1-10,15,20-40x5";
/// "" for none.
std::string formatFrames(std::vector<Frame> frames);

/// What is missing between the frames if they are one row of even steps, as formatFrames would say
/// it; "" for nothing. At most eight ranges, then "...".
std::string describeGaps(std::vector<Frame> frames);

/// Frames that are missing between those of one row of even steps, at most a million.
std::vector<Frame> findGaps(std::vector<Frame> frames);

/// One of `count` equal parts: `index` counts from 0.
struct Chunk {
    std::size_t index = 0;
    std::size_t count = 1;
};

/// "I/N". Throws ShotError (Request) unless 0 <= I < N.
Chunk parseChunk(std::string_view text);

/// Where the part begins and ends among `size` things. Parts follow one another without overlap,
/// cover everything, and differ by one thing at most; some are empty where there are more parts
/// than things.
struct ChunkRange {
    std::size_t begin;
    std::size_t end;
};
ChunkRange findChunk(Chunk const& chunk, std::size_t size);
