#include "compositor/lib/hdr/CNodeCatagory.h"

namespace {
KIVLinkedList& all_catagories()
{
    static auto* catagories = new KIVLinkedList(true);
    return *catagories;
}

CNodeCatagory* default_catagory = nullptr;
} // namespace

void CNodeCatagory::init()
{
    if (default_catagory)
        return;
    default_catagory = new CNodeCatagory(0, "Misc.", 7);
    add(new CNodeCatagory(1, "", 6));
    add(new CNodeCatagory(10, "Position", 0));
    add(new CNodeCatagory(11, "Position", 2));
    add(new CNodeCatagory(20, "Filters", 3));
    add(new CNodeCatagory(21, "Filters", 1));
    add(new CNodeCatagory(30, "Image", 4));
    add(new CNodeCatagory(40, "Ink&Paint", 5));
    add(new CNodeCatagory(41, "Ink&Paint", 7));
    add(default_catagory);
}

void CNodeCatagory::add(gsl::owner<CNodeCatagory*> catagory)
{
    init();
    all_catagories().add(catagory);
}

const KIVLinkedList& CNodeCatagory::inq_node_catagories()
{
    init();
    return all_catagories();
}

const CNodeCatagory* CNodeCatagory::find_catagory(int type)
{
    init();
    for (const auto* catagory : all_catagories().of<CNodeCatagory>())
        if (catagory->type == type)
            return catagory;
    return default_catagory;
}
