// What others offer for our operations: libyuv's functions, and where it has
// none a plain loop.
//
// libyuv names 32- and 24-bit formats by little-endian words, from the top byte
// down: its ARGB is our bgra8888, ABGR rgba8888, BGRA argb8888, RGBA abgr8888,
// RAW rgb888 and RGB24 bgr888. Its matrix is the same, rounded in its own way.
#ifndef PIVRA_BENCH_PEERS_H
#define PIVRA_BENCH_PEERS_H

#include <functional>
#include <string>
#include <string_view>

#include "pivra.h"

struct Peer {
  std::function<void(const ImageDesc &src, const ImageDesc &dst)> run;  // empty: there is none
  std::string name = "libyuv";
};

// The peer of a kind of operations, such as yuv420_to_rgb565.
const Peer &find_peer(std::string_view kind);

#endif
