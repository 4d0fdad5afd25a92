#pragma once

#include "compositor/lib/hdr/NodeClass.h"

/// Registers the transforms and the camera.
class CNodeAffineDLLInitialiser : public NodeInitialiser {
public:
    CNodeAffineDLLInitialiser();
    explicit CNodeAffineDLLInitialiser(ClassManager* manager);

private:
    void init();
};
