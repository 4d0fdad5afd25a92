#include "tests/support/Captured.h"
#include "xsheet/store_control/hdr/LoadFindings.h"

#include <gtest/gtest.h>

TEST(LoadFindings, are_told_together_and_each_once)
{
    const Captured captured;
    LoadFindings::add("lost, since nobody collects");
    {
        const LoadFindings none;
        none.tell("/shots/a");
        EXPECT_TRUE(captured.inq_alerts().empty());
    }
    const LoadFindings findings;
    for (const char* finding : {"One", "Two", "One"})
        LoadFindings::add(finding);
    findings.tell("/shots/b");
    EXPECT_EQ(captured.inq_alerts(),
              std::vector<std::string>{
                  "The parts of the scene /shots/b contradict one another:\nOne.\nTwo."});
}

TEST(LoadFindings, are_counted_where_they_are_more_than_a_panel_shows)
{
    const Captured captured;
    const LoadFindings findings;
    for (int i = 0; i < 1000; ++i)
        LoadFindings::add(KIVString(i, 0));
    findings.tell("/shots/a");
    ASSERT_EQ(captured.inq_alerts().size(), 1U);
    EXPECT_TRUE(captured.inq_alerts()[0].ends_with("\n39.\nand 960 more."));
}
