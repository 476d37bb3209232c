// libyuv's conversions beside ours.
//
// libyuv names 32- and 24-bit formats by little-endian words, from the top byte
// down: its ARGB is our bgra8888, ABGR rgba8888, BGRA argb8888, RGBA abgr8888,
// RAW rgb888 and RGB24 bgr888. Its matrix is the same, rounded in its own way.
#ifndef PIVRA_BENCH_PEERS_H
#define PIVRA_BENCH_PEERS_H

#include <functional>
#include <string_view>

#include "pivra.h"

using Peer = std::function<void(const ImageDesc &src, const ImageDesc &dst)>;

// libyuv's conversion for one of ours, named like yuv420_to_rgb565; empty if it
// has none.
const Peer &find_peer(std::string_view kernel);

#endif
