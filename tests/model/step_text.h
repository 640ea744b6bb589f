#ifndef PLC_TESTS_MODEL_STEP_TEXT_H
#define PLC_TESTS_MODEL_STEP_TEXT_H

#include <string>

#include "model/steps.h"

namespace plc::model {

/// The sequence as a test to paste into found_sequences_test.cpp. Replies should be in bytes.
std::string testText(const Sequence& sequence);

} // namespace plc::model

#endif
