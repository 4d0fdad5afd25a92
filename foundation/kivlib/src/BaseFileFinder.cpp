#include "kivlib/hdr/BaseFileFinder.h"

#include <memory>

namespace {
std::unique_ptr<BaseFileFinder> our_finder;
}

void set_file_finder(BaseFileFinder* finder)
{
    if (finder != our_finder.get())
        our_finder.reset(finder);
}

BaseFileFinder* inq_file_finder()
{
    return our_finder.get();
}

void delete_file_finder()
{
    our_finder.reset();
}
