#pragma once

#include "kivlib/hdr/KIVLinkedList.h"

/// A drawer of the node palette, with the colour that its nodes have on the canvas.
class CNodeCatagory : public KIVObject {
public:
    CNodeCatagory(int type, const KIVString& name, int colour_type)
        : type(type), name(name), colour_type(colour_type)
    {}

    /// Makes the palette's own drawers, once. Whoever asks for a drawer or adds one does so too.
    static void init();

    /// Takes it over.
    static void add(gsl::owner<CNodeCatagory*> catagory);
    static const KIVLinkedList& inq_node_catagories();

    /// "Misc." for a number that no drawer has.
    static const CNodeCatagory* find_catagory(int type);
    static int find_colour_type(int type) { return find_catagory(type)->colour_type; }
    static const KIVString& find_name(int type) { return find_catagory(type)->name; }

    int inq_type() const { return type; }
    const KIVString& inq_name() const { return name; }
    int inq_colour_type() const { return colour_type; }

private:
    int type;
    KIVString name;
    int colour_type;
};
