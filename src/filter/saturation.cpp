// Saturation: the table of a gain, and planes of chroma mapped through it.
#include "filter/rows.h"
#include "pivra.h"

uint8_t lut[256];

namespace {

constexpr int16_t kDefaultGain = 1180;

// The samples that entries map are those of a ramp of 32-bit words, read by halves.
int32_t ramp_half(int32_t entry) { return entry % 2 == 0 ? entry / 2 : 0; }

uint8_t clamp(int32_t n) { return static_cast<uint8_t>(n < 0 ? 0 : n > 255 ? 255 : n); }

}  // namespace

void color_sat_lut(uint8_t *dst, int16_t gain) {
  for (int32_t entry = 0; entry < 256; ++entry)
    dst[entry] = clamp((((ramp_half(entry) - 128) * gain) >> 10) + 128);
}

int32_t pivra_vqe_cs_init(int32_t gain) {
  color_sat_lut(lut, gain > 0 ? static_cast<int16_t>(gain) : kDefaultGain);
  return PIVRA_OK;
}

void color_sat(const uint8_t *table, int32_t count, const uint8_t *src_u, const uint8_t *src_v,
               uint8_t *dst_u, uint8_t *dst_v) {
  const auto look_up = pivra::chosen(pivra::filter_rows_tables).look_up;
  look_up(table, src_u, count, dst_u);
  look_up(table, src_v, count, dst_v);
}

int32_t pivra_vqe_cs(void) { return PIVRA_REFUSED; }

#define PIVRA_4(n) (n), (n) + 1, (n) + 2, (n) + 3
#define PIVRA_16(n) PIVRA_4(n), PIVRA_4((n) + 4), PIVRA_4((n) + 8), PIVRA_4((n) + 12)
#define PIVRA_64(n) PIVRA_16(n), PIVRA_16((n) + 16), PIVRA_16((n) + 32), PIVRA_16((n) + 48)
const int16_t table[256] = {PIVRA_64(0), PIVRA_64(64), PIVRA_64(128), PIVRA_64(192)};
#undef PIVRA_4
#undef PIVRA_16
#undef PIVRA_64
