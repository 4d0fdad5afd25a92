#pragma once

#include "kivlib/hdr/KIVError.h"

/// A node does not know the pass.
class DAGOpGenericError : public KIVError {
public:
    DAGOpGenericError() : KIVError(0, 0) {}
    gsl::owner<KIVObject*> clone() const override { return new DAGOpGenericError(*this); }
    KIVString inq_description() const override { return "Failed!"; }
};

/// The graph feeds back into itself.
class DAGExecTCErrorCyclic : public KIVError {
public:
    DAGExecTCErrorCyclic() : KIVError(0, 0) {}
    gsl::owner<KIVObject*> clone() const override { return new DAGExecTCErrorCyclic(*this); }
    KIVString inq_description() const override { return "No Loops allowed in the DAG"; }
};

/// A channel has several connections and no data type that they can be composited in.
class DAGExecTCErrorComposite : public KIVError {
public:
    DAGExecTCErrorComposite() : KIVError(0, 0) {}
    gsl::owner<KIVObject*> clone() const override { return new DAGExecTCErrorComposite(*this); }
    KIVString inq_description() const override { return "Multiple Connections not allowed"; }
};

/// No data type fits.
class DAGExecTCErrorType : public KIVError {
public:
    DAGExecTCErrorType() : KIVError(0, 0) {}
    gsl::owner<KIVObject*> clone() const override { return new DAGExecTCErrorType(*this); }
    KIVString inq_description() const override { return "Incompatiable Types"; }
};
