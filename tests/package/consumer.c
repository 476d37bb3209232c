/* One orange picture, converted with the installed library. */
#include <pivra.h>
#include <stdio.h>
#include <string.h>

enum { kWidth = 16, kHeight = 8 };

int main(void) {
  static uint8_t yuv[kWidth * kHeight * 3 / 2], rgb[kWidth * kHeight * 3];
  memset(yuv, 145, kWidth * kHeight);
  memset(yuv + kWidth * kHeight, 54, kWidth * kHeight / 4);
  memset(yuv + kWidth * kHeight * 5 / 4, 184, kWidth * kHeight / 4);

  ImageDesc src = {.width = {kWidth, kWidth / 2, kWidth / 2},
                   .height = {kHeight, kHeight / 2, kHeight / 2},
                   .stride = {kWidth, kWidth / 2, kWidth / 2},
                   .plane = {yuv, yuv + kWidth * kHeight, yuv + kWidth * kHeight * 5 / 4},
                   .format = PIVRA_FORMAT_YUV420};
  ImageDesc dst = {.width = {kWidth},
                   .height = {kHeight},
                   .stride = {3 * kWidth},
                   .plane = {rgb},
                   .format = PIVRA_FORMAT_RGB888};
  if (pivra_csc(&src, &dst) != PIVRA_OK) return 1;

  const uint8_t *last = rgb + sizeof rgb - 3;
  printf("%d %d %d\n", last[0], last[1], last[2]);
  return 0;
}
