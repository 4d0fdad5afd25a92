#include "imagelib/src/ZlibPacker.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <zlib.h>

/// Flat, grained and incompressible blocks, of a byte up to more than a window.
TEST(ZlibPacker, packs_what_zlib_unpacks_in_both_ways)
{
    for (const auto way : {ZlibPacker::FASTEST, ZlibPacker::WITHOUT_VECTORS}) {
        ZlibPacker packer(way);
        for (const std::size_t size : {1, 8, 9, 1000, 500000})
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

/// Blocks whose beginnings come again, so that it shows if one is not found again.
TEST(ZlibPacker, packs_a_block_the_same_wherever_the_packer_lies)
{
    constexpr std::size_t SIZE = 1000;
    constexpr std::size_t BEGINNING = 40;
    std::vector<std::vector<unsigned char>> blocks(20, std::vector<unsigned char>(SIZE));
    std::uint32_t seed = 1;
    for (auto& block : blocks)
        for (std::size_t i = 0; i < SIZE; ++i)
            block[i] = i < SIZE / 2 || i >= SIZE / 2 + BEGINNING
                           ? static_cast<unsigned char>((seed = seed * 1664525 + 1013904223) >> 28)
                           : block[i - SIZE / 2];
    std::vector<std::unique_ptr<ZlibPacker>> packers(400);
    std::vector<std::vector<unsigned char>> first;
    for (auto& packer : packers) {
        packer = std::make_unique<ZlibPacker>();
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            std::vector<unsigned char> packed(ZlibPacker::inq_most(SIZE));
            packed.resize(packer->pack(blocks[i].data(), SIZE, packed.data()));
            if (first.size() == i)
                first.push_back(packed);
            ASSERT_TRUE(packed == first[i]) << i;
        }
    }
}
