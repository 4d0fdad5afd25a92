#pragma once

#include "compositor/lib/hdr/NodeClass.h"

class CNodeRasterImageLoadDelegate;

/// Registers the image data, the image nodes, and the ops by which transforms carry images.
class CNodeImageDLLInitialiser : public NodeInitialiser {
public:
    CNodeImageDLLInitialiser();
    explicit CNodeImageDLLInitialiser(ClassManager* manager);

    /// The user interface's; null without one. It stays its owner's.
    static void set_delegate(CNodeRasterImageLoadDelegate* delegate) { m_delegate = delegate; }
    static CNodeRasterImageLoadDelegate* inq_ui_delegate() { return m_delegate; }

private:
    void init();
    void add_screen_base();
    void init_generic();

    inline static CNodeRasterImageLoadDelegate* m_delegate = nullptr; // not owned
};
