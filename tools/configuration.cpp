#include "configuration.hpp"

#include "cli.hpp"

#include "zan/config.hpp"

namespace zanfe {

std::unique_ptr<zan::db::Store> load_configuration(const std::optional<std::string>& file,
                                                   std::optional<int32_t>* default_variant) {
    auto loaded = file ? zan::config::load_file(*file) : zan::config::load_default();
    if (!loaded) throw ToolError(loaded.error);
    if (default_variant) *default_variant = loaded.default_variant;
    return std::move(loaded.store);
}

}  // namespace zanfe
