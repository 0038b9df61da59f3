#pragma once

#include <vector>

#include "media/plan.h"
#include "zephmetadata/types.h"

/// Proof that a plan was carried out as it says. Each answers an empty text, or in English what is not as it should be.
namespace zephmetadata::media {

/// Compares every byte: what the plan keeps is there once, unchanged and in its place, what it replaces is as it says,
/// and there is nothing else. Memory is bounded.
UTF8String PlanDifference(const Plan& plan, const ByteSource& before, const ByteSource& after);

/// Whether what a file refers to by offset (Container::References) lies where the plan moved it. Stretches of which the
/// plan replaces bytes may lie anywhere. With as many stretches as before they are compared one by one; otherwise those
/// from before have to be among the new ones, in their order.
UTF8String ReferenceDifference(const Plan& plan, const std::vector<Range>& before, const std::vector<Range>& after);

}  // namespace zephmetadata::media
