#pragma once

#include "compositor/lib/hdr/CNode.h"

/// An entry of the node palette: it answers for the class that it offers and is never evaluated.
class StandInCNode : public CNode {
public:
    explicit StandInCNode(CNodeDescriptor* desc);

    ClassDescriptor* inq_class_descriptor() const override;
    const char* class_name() const override { return "StandInCNode"; }
    int inq_type() const override { return -1; }
    KIVString inq_name() const override { return {}; }
    bool inq_is_fully_connected() const override { return true; }
    gsl::owner<CNodeOp*> new_nodeop(int requested_type) override;

    int inq_tab() const { return tab; }
    void set_tab(int new_tab) { tab = new_tab; }

private:
    CNodeDescriptor* desc; // not owned
    int tab = 0;
};

/// The palette's entry for a macro file.
class MacroStandInCNode : public StandInCNode {
public:
    MacroStandInCNode(CNodeDescriptor* desc, const KIVString& filename)
        : StandInCNode(desc), filename(filename)
    {}

    ClassDescriptor* inq_class_descriptor() const override;
    const char* class_name() const override { return "MacroStandInCNode"; }
    KIVString inq_name() const override { return inq_displayed_name(); }
    KIVString inq_displayed_type_name() const override { return "Macro"; }

    const KIVString& inq_filename() const { return filename; }

    /// The file's name without folder and extension.
    KIVString inq_displayed_name() const;

private:
    KIVString filename;
};
