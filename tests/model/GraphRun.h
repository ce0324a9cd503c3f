#pragma once

#include <string>

namespace orvo::model
{

/// Explores one kind of device on the model and walks every edge on the product's objects; figures
/// and findings go to standard output. False when something was found.
///
/// kind: "field", "developer", or either with "-without" for a device that does not have the judged
///       services.
bool exploreDevice(const std::string& kind);

} // namespace orvo::model
