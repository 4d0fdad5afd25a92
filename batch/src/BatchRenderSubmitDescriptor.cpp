#include "batch/hdr/BatchRenderSubmitDescriptor.h"

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/report_error.h"

KIV_STORED_CLASS(BatchRenderSubmitDescriptor, -1);

namespace {
constexpr char SOURCE_PLACE[] = "batch/src/BatchRenderSubmitDescriptor";
constexpr int NULL_FUNCTION_LINE = 147;
} // namespace

// The class manager completes a record from a file by this one, so it must not meet this before
// the factory is set.
BatchRenderSubmitDescriptor::BatchRenderSubmitDescriptor(const char* name, const char* base_name,
                                                         KIVReadFunction reader, int version,
                                                         ClassManager* manager,
                                                         NewBatchRenderSubmitFunction factory)
    : ClassDescriptor(name, base_name, reader, version, nullptr), factory(factory)
{
    if (manager)
        manager->enter(this);
}

BatchRenderSubmitDescriptor::BatchRenderSubmitDescriptor(KIVIStream& stream)
    : ClassDescriptor(stream)
{}

void BatchRenderSubmitDescriptor::storer(KIVOStream& stream)
{
    ClassDescriptor::storer(stream);
}

void BatchRenderSubmitDescriptor::setup_func_refs_from(const ClassDescriptor* other)
{
    ClassDescriptor::setup_func_refs_from(other);
    if (other->inq_class_descriptor()->is_subclass_of("BatchRenderSubmitDescriptor"))
        factory = static_cast<const BatchRenderSubmitDescriptor*>(other)->factory;
}

gsl::owner<BatchRenderSubmit*> BatchRenderSubmitDescriptor::new_batchrendersubmit() const
{
    if (!factory)
        load_dll();
    if (factory)
        return factory();
    report_error(SOURCE_PLACE, NULL_FUNCTION_LINE)
        << "Can not make new BatchRenderSubmit (null function): " << inq_name() << ".\n";
    return nullptr;
}
