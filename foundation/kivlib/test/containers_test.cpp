#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/SlotList.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace {
class LinkedList : public testing::Test {
protected:
    LinkedList()
    {
        for (KIVString* text : {&a, &b, &c})
            list.add(text);
    }

    KIVString a{"a"}, b{"b"}, c{"c"};
    KIVLinkedList list;
};
} // namespace

TEST_F(LinkedList, is_walked_both_ways_and_while_it_shrinks)
{
    KIVIterator i(list);
    EXPECT_EQ(i++, &a);
    EXPECT_EQ(i++, &b);
    delete i.remove_this();
    EXPECT_EQ(i(), nullptr);
    EXPECT_EQ(i++, &c);
    EXPECT_EQ(i--, &a);
    EXPECT_EQ(i.remove(), &a);
    EXPECT_EQ(++i, &c);
    EXPECT_EQ(i++, nullptr);
    i.reset();
    EXPECT_EQ(i++, &c);

    const KIVLinkedList none;
    ReadOnlyIterator nothing(none);
    EXPECT_EQ(nothing++, nullptr);
}

TEST(SlotList, agrees_with_a_set_of_numbers)
{
    std::mt19937 random(7);
    const auto number = [&] { return static_cast<int>(random() % 60); };
    SlotList list;
    std::set<int> model;
    for (int step = 0; step < 3000; ++step) {
        const int first = number();
        const int last = first + number() / 8;
        const bool adds = random() % 2;
        adds ? list.add_range(first, last) : list.remove_range(first, last);
        for (int i = first; i <= last; ++i)
            adds ? void(model.insert(i)) : void(model.erase(i));
        ASSERT_EQ(list.contains_slot(first), adds);

        std::vector<int> forwards;
        std::vector<int> backwards;
        for (SlotIterator i(&list); i++;)
            forwards.push_back(i());
        for (SlotIterator i(&list); i--;)
            backwards.push_back(i());
        ASSERT_EQ(forwards, std::vector<int>(model.begin(), model.end()));
        ASSERT_EQ(backwards, std::vector<int>(model.rbegin(), model.rend()));
        for (std::size_t i = 1; i < list.inq_ranges().size(); ++i)
            ASSERT_GT(list.inq_ranges()[i].first, list.inq_ranges()[i - 1].last + 1);
    }
}
