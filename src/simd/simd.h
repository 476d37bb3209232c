// The vector vocabulary: the few operations that kernels are written in.
//
// A kernel includes this header and is compiled once per instruction-set level.
// Everything here and everything in the kernel lives in the namespace of that
// level, pivra::PIVRA_LEVEL, so that the linker never merges code of two levels.
//
// Samples travel as 16-bit lanes, in two vectors: the samples at even positions
// and those at odd positions. A chroma sample serves an even and an odd pixel,
// so the lanes of a chroma vector match both without being repeated.
//
//   I16            kBlock / 2 signed 16-bit lanes; + - & << >> compile to vector code
//   Samples        kBlock consecutive bytes
//   Narrow         kBlock / 2 bytes
//   Twos           two bytes for each lane, a first and a second one
//   Packed422      Samples of luma and Twos of chroma
//   Pair<T>        { even, odd }: kBlock values by their position
//   Bytes          kBlock bytes, in whatever order the level packs them
//   Whole          kBlock bytes in memory order
//
//   load_samples(p), load_narrow(p)
//   load_twos(p)              kBlock bytes, two by two
//   load_packed422<kY>(p)     2 kBlock bytes, of which kY, kY + 2, ... are luma
//   twos(first, second)       out of two Narrow
//   even_twos, odd_twos       out of two Samples, at their even or odd positions
//   splat<k>()                a constant in every lane
//   scale<k, offset>(s)       k n - offset of each sample n
//   centre(t)                 first - 128 and second - 128, ready to be weighed
//   weigh<which, k>(c)        k times the first (0) or the second (1) of them
//   weigh_both<k0, k1>(c)     k0 times the first plus k1 times the second
//   add_half<which>(i, c)     i plus the floor of half of one of them
//   add_saturated(i, j)       the sum saturated to 16 bits
//
// Results x leave as lanes of 128 x, seven bits of fraction, whose floor is then
// clamped to 0..255:
//
//   clamp(i), join(even, odd) bytes of both halves: Clamped, and from two of them Bytes
//   store_interleaved3/4      byte triples or quadruples
//   clamp_565(a, b, c)        5-6-5 words with a in the top bits: Words565
//   store_565(p, even, odd)   both halves' words
//
// Bytes that are moved and not computed with:
//
//   load_bytes, store_bytes   Whole
//   load_pairs(p)             2 kBlock bytes: Pair<Whole>
//   store_pairs(p, even, odd) the same back
//   exchange_neighbours(w)    bytes 2i and 2i + 1 exchanged
//   load_shifted<1, 3 or 5>(p)  Whole from p, p + 1, ... on; p goes on by kBlock
//   select(mask, a, b)        bits of a where those of the mask are set, of b where not
//
// and bytes that are computed with as bytes:
//
//   parity(a, b, c), majority(a, b, c)  of three bits each: their sum's two digits
//   mean(a, b)                rounded up
//   add_saturated(a, b), subtract_saturated(a, b)  to 0..255
//
// and, where registers hold a table of 256 bytes (PIVRA_TABLES_IN_REGISTERS):
//
//   load_table(p)             Table
//   look_up(t, w)             entry n for each byte n
//
// Units of 1, 2 or 4 bytes that change places. A row gives kLane bytes to a register;
// each lane of a Whole is of another row.
//
//   load_lanes(p, step)       Whole, lane by lane from p, p + step, ...
//   transpose<unit>(v)        of n registers an array, in place. Where n is the units of
//                             a lane, register k gets unit k of each row, lane by lane
//   load_and_step(p, step), store_and_step(p, step, w)  where n registers of n units can be
//                             transposed too (PIVRA_TRANSPOSES_SQUARES): Whole, and p moved on
//   load_lane(p)              Lane, of one row; n of them by 8 bytes can be transposed
//   store_eights(p, step, l)  the 8-byte parts of a Lane to p, p + step, ...
//   reverse<unit>(w)          the last unit first
//   copy_mirrored<unit>(p, q) kMirrored<unit> bytes from p to q, the last unit first;
//                             here the unit may be 3
//   copy_mirrored_far<unit>(p, end, n)  as much of n bytes as goes faster than so to
//                             before `end`; moves p on and returns the new end
//   move_apart<first>(w)      3-byte units of each lane, from byte `first` on, to 4 bytes
//   store_triples(p, w)       the first 3 bytes of every 4, which is 3/4 kBlock bytes
//   copy_kept<kept, of, unit>(p, q)  the first 1 of every 2, 2 of 3 or 3 of 4 units of 1
//                             or 2 bytes from p to q, kKept<kept> bytes of them
//   load_fours(p, stride)     kBlock bytes of each of eight rows: Fours. The first four
//                             of every eight bytes, each in one of v[4], in some order
//   store_fours(p, stride, f) the rows back with v[4] changed
//
// Unsigned bytes that are computed with, Whole: beside + - & | ^ ~ < >
//
//   minimum, maximum(a, b)
//   halve(a)
//
// Decisions of which each may hang on the one before. A lane of U16 is all ones for
// yes. Decision i is yes if sure[i], and if possible[i] when decision i - 1 is no;
// what is sure is possible.
//
//   last_decision(bool)       LastDecision: the one before the first lane
//   decisions_before(sure, possible, last)  in each lane the one before its own; the
//                             last one of all is kept for the next block
//
// RGB pixels are weighed as they lie in memory. Sums are taken modulo 65536, and a
// result is the upper byte of its sum.
//
//   load_pixels<3 or 4>(p)    kBlock pixels of that many bytes
//   load_words(p)             kBlock little-endian words: Words, two of U16 in v[2]
//   even_pixels(block)        every other pixel of either, from the first on
//   top_bytes<W>(even)        W::k are ByteWeights or, for words, WordWeights: TopBytes
//   store_top_bytes<W>(p, block)  kBlock bytes, one for each pixel
//   store_planes(p, q, a, b)  TopBytes a to p and b to q
//   store_twos(p, a, b)       TopBytes of both by turns
//   store_top_bits_565(p, block)  5-6-5 words of the first three bytes of pixels
//
// Taps: outputs that are made of two bytes, or two words, of a row. A register of them
// has both for kBlock / 2 bytes of output. Levels that cannot gather them leave
// PIVRA_GATHERS undefined.
//
//   gather<windows>(p, from, index)  bytes of windows that begin at p + from[i]
//   tap_place<unit>(which, i)        of byte i in the first or second of two registers:
//                                    its place in their kBlock bytes of output, which tap
//   kWindowsOfTaps, kWindowBytes     by the number of windows, up to kMostWindows: how
//                                    many parts a register has, and what each reaches
//   mean_of_taps(t0, t1)      truncated, of two; or (t0, t1, u0, u1), of two rows' four
//   word_taps(t0, t1)         the first and the second words: Pair<U16>
//   weigh_taps(t, weights)    sums of both bytes weighed, weights lying as taps do: U16
//   divide(sum, factor)       (sum * factor) >> 18
//   join_taps(sums)           those of two registers as bytes
//   beside(a, b), join_beside(sums)  the same with bytes of two rows as taps
//   truncated_mean(a, b)      of Whole
//   halve<unit>(p, dst), halve<unit>(p, below, dst)  kHalves bytes, means of neighbours of
//                             1, 2 or 4 bytes in one row or with the one so far below;
//                             pointers are moved on
//   halve<unit, 32>(p, below, dst)  32 bytes of them
//
// Other stores return the address behind what they wrote. GCC 12 keeps const aggregates
// in memory, so locals of the types above that are structures are not const.
//
// Loads and stores touch exactly the bytes they name, at any alignment. A level
// without vectors defines no kBlock and leaves PIVRA_VECTORS at 0; its kernels
// are the scalar code that the others use for what is left of a row.
#ifndef PIVRA_SIMD_SIMD_H
#define PIVRA_SIMD_SIMD_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifndef PIVRA_LEVEL
#error "PIVRA_LEVEL names the namespace of the instruction-set level"
#endif

#define PIVRA_INLINE __attribute__((always_inline)) inline

namespace pivra::PIVRA_LEVEL {

template <class T>
struct Pair {
  T even, odd;
};

// Which byte becomes byte i if those of units 2n and 2n + 1 go side by side.
template <int unit>
constexpr int beside_byte(int i) {
  return i / (2 * unit) * (2 * unit) + i % 2 * unit + i % (2 * unit) / 2;
}

// Which byte becomes byte i if the first `kept` of every `of` units are kept.
template <int kept, int of, int unit>
constexpr int kept_byte(int i) {
  return i / (kept * unit) * (of * unit) + i % (kept * unit);
}

// Where a tap goes.
struct TapPlace {
  int32_t output, tap;
};

// For the bytes of a pixel.
struct ByteWeights {
  int32_t byte[4], offset;
};
// For a word, the word shifted down by 5 and by 11.
struct WordWeights {
  int32_t whole, from5, from11, offset;
};

}  // namespace pivra::PIVRA_LEVEL

#if defined(PIVRA_NO_VECTORS)
#define PIVRA_VECTORS 0
#elif defined(__ARM_NEON)
#define PIVRA_VECTORS 1
#include "simd/neon.h"
#elif defined(__SSE2__)
#define PIVRA_VECTORS 1
#include "simd/x86.h"
#else
#define PIVRA_VECTORS 0
#endif

#endif
