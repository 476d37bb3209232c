#include <gtest/gtest.h>
#include <tcor.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <vector>

namespace {

TEST(Tcor, AllocatesAlignedBlocksOfTheirOwn) {
  std::vector<std::pair<void *, uint32_t>> blocks;
  std::set<void *> addresses;
  for (uint32_t size = 0; size < 3000; size += size < 100 ? 1 : 97) {
    void *block = tcor_malloc_align32(size);
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 32, 0u) << size;
    EXPECT_TRUE(addresses.insert(block).second) << size;
    std::memset(block, static_cast<int>(size & 0xFF), size);
    blocks.emplace_back(block, size);
  }
  for (const auto &[block, size] : blocks) {
    const auto *bytes = static_cast<const uint8_t *>(block);
    EXPECT_EQ(std::count(bytes, bytes + size, static_cast<uint8_t>(size)), size);
    tcor_mfree_align32(block);
  }
}

TEST(Tcor, FreesNothing) { tcor_mfree_align32(nullptr); }

}  // namespace
