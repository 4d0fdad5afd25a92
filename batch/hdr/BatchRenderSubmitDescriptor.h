#pragma once

#include "kivlib/hdr/StoredClass.h"

class BatchRenderSubmit;

using NewBatchRenderSubmitFunction = BatchRenderSubmit* (*)();

/// The record of a class of submitters, and how one is made.
class BatchRenderSubmitDescriptor : public ClassDescriptor {
    KIV_STORED(BatchRenderSubmitDescriptor, ClassDescriptor);

public:
    BatchRenderSubmitDescriptor(const char* name, const char* base_name, KIVReadFunction reader,
                                int version, ClassManager* manager,
                                NewBatchRenderSubmitFunction factory);

    /// One whose code may not be loaded.
    explicit BatchRenderSubmitDescriptor(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    void setup_func_refs_from(const ClassDescriptor* other) override;

    /// Null if there is no module of the class.
    gsl::owner<BatchRenderSubmit*> new_batchrendersubmit() const;

private:
    NewBatchRenderSubmitFunction factory = nullptr;
};
