#include "batch/hdr/BatchRenderSubmitDescriptor.h"
#include "kivlib/hdr/DLLInitialiser.h"
#include "modules/farm/hdr/FarmRenderSubmit.h"

namespace {
/// Registers the submitter of the farm.
class FarmDLLInitialiser : public DLLInitialiser {
public:
    explicit FarmDLLInitialiser(ClassManager* manager)
    {
        init();
        setup(manager);
    }

private:
    void init()
    {
        auto* descriptor = new BatchRenderSubmitDescriptor(
            FarmRenderSubmit::inq_class_name_s(), FarmRenderSubmit::inq_base_name_s(), nullptr, -1,
            nullptr, []() -> BatchRenderSubmit* { return new FarmRenderSubmit; });
        FarmRenderSubmit::set_class_descriptor_s(descriptor);
        add(descriptor);
    }
};
} // namespace

KIV_MODULE(FarmDLLInitialiser);
