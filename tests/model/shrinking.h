#ifndef PLC_TESTS_MODEL_SHRINKING_H
#define PLC_TESTS_MODEL_SHRINKING_H

#include <functional>
#include <string>

#include "model/steps.h"

namespace plc::model {

/// What a run of a sequence found.
struct Finding {
    /// Number of the step after which the two sides differ; -1: they do not.
    int step = -1;
    std::string difference;

    explicit operator bool() const { return step >= 0; }
};

/// Runs the sequence on a new driver and a new model.
Finding findDifference(const Sequence& sequence);

/// The sequence with its replies in bytes.
Sequence withReplyBytes(const Sequence& sequence);

typedef std::function<Finding(const Sequence&)> Finder;

/// A sequence in which `find` finds something as well, and out of which no step, and of whose steps
/// no entry, can be left without losing it.
Sequence shrink(const Sequence& failing, const Finder& find = findDifference);

} // namespace plc::model

#endif
