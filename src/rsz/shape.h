// The samples that are resized: what lies at one position of a row. A sample has
// fields, and each field is averaged and weighed on its own.
#ifndef PIVRA_RSZ_SHAPE_H
#define PIVRA_RSZ_SHAPE_H

#include <stddef.h>
#include <stdint.h>

namespace pivra {

// 5-6-5 samples are little-endian words; of the others every byte is a field.
enum Shape { k8b, k8b8b, k5b6b5b, k8b8b8b, k8b8b8b8b, kShapes };

constexpr int32_t kSampleBytes[kShapes] = {1, 2, 2, 3, 4};

// Whole rows know only two kinds of fields.
enum Fields { kByteFields, k565Fields, kFields };

constexpr Fields fields_of(Shape shape) { return shape == k5b6b5b ? k565Fields : kByteFields; }

}  // namespace pivra

#endif
