#include "tests/support/Captured.h"
#include "xsheet/store_control/hdr/LoadFindings.h"

#include <gtest/gtest.h>

TEST(LoadFindings, are_told_once_and_counted_where_they_are_more_than_a_panel_shows)
{
    const Captured captured;
    const LoadFindings findings;
    for (int i = 0; i < 2000; ++i)
        LoadFindings::add(KIVString(i % 1000, 0));
    findings.tell("/shots/a");
    ASSERT_EQ(captured.inq_alerts().size(), 1U);
    EXPECT_TRUE(captured.inq_alerts()[0].ends_with("\n39.\nand 960 more."));
}
