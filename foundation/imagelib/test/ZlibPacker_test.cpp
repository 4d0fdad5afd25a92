#include "imagelib/src/ZlibPacker.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <zlib.h>

/// Flat, grained and incompressible blocks, of a byte up to more than a window.
TEST(ZlibPacker, packs_what_zlib_unpacks_in_both_ways)
{
    for (const auto way : {ZlibPacker::FASTEST, ZlibPacker::REPEATABLE}) {
        ZlibPacker packer(way);
        for (const std::size_t size : {1, 1000, 500000})
            for (const unsigned mask : {0U, 3U, 0xFFU}) {
                std::vector<unsigned char> block(size);
                std::uint32_t seed = 1;
                for (unsigned char& byte : block)
                    byte = static_cast<unsigned char>((seed = seed * 1664525 + 1013904223) >> 24 &
                                                      mask);
                std::vector<unsigned char> packed(ZlibPacker::inq_most(size));
                const std::size_t count = packer.pack(block.data(), size, packed.data());
                ASSERT_GT(count, 0U);
                std::vector<unsigned char> back(size);
                uLongf back_size = size;
                ASSERT_EQ(::uncompress(back.data(), &back_size, packed.data(), count), Z_OK);
                EXPECT_TRUE(back_size == size && back == block) << way << size << mask;
            }
    }
}
