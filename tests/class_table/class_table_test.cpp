#include "kivlib/hdr/ClassDescriptor.h"
#include "kivlib/hdr/ClassManager.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

// Every stored class with its base name and its version stands in a text that is kept with the
// sources, so that a changed number is seen by whoever reads the change.

namespace {
std::string text_of(const ClassDescriptor& descriptor)
{
    std::ostringstream line;
    line << descriptor.inq_name().str() << ' ' << descriptor.inq_base_name().str() << ' '
         << descriptor.inq_version() << '\n';
    return line.str();
}

std::string table_of_classes()
{
    std::set<std::string> lines;
    const std::unique_ptr<ClassDescriptorIterator> iterator(
        ClassManager::inq_main()->new_iterator());
    for (; iterator->is_valid(); iterator->advance())
        lines.insert(text_of(*iterator->inq_current()));
    std::string table;
    for (const std::string& line : lines)
        table += line;
    return table;
}
} // namespace

TEST(ClassTable, is_that_of_the_documents)
{
    std::ifstream file(MONTARAY_SOURCES "/docs/format/class_table.txt");
    std::ostringstream documented;
    documented << file.rdbuf();
    const std::string table = table_of_classes();
    std::ofstream("class_table.txt") << table;
    EXPECT_EQ(table, documented.str()) << "what is registered now was written to class_table.txt";
}
