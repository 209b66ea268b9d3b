// The configuration that the tool walks requests over.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "zan/database.hpp"

namespace zanfe {

// The rows of the file, or of the configuration built into the platform when no file is
// given. A file that cannot be read or does not load throws ToolError with one line, and
// nothing of it is kept.
// *default_variant receives the file's "@default_variant", if it names one.
std::unique_ptr<zan::db::Store> load_configuration(const std::optional<std::string>& file,
                                                   std::optional<int32_t>* default_variant = nullptr);

}  // namespace zanfe
