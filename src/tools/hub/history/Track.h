// A stretch of the positions, with as few points as were asked for.
#pragma once

#include "hub/history/Arguments.h"
#include "hub/history/Database.h"

#include <string>

namespace Hub {

/// The JSON of the positions between two moments: columns, oldest first. Each point is the first
/// position of a step, with the worst accuracy and the lowest quality in it; steps of a minute and
/// more are made of whole minutes. Nothing when the database cannot be read.
std::optional<std::string> ReadTrack(const CDatabase& database, const SHistoryArguments& arguments);

} // namespace Hub
