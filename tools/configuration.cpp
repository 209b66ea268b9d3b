#include "configuration.hpp"

#include "cli.hpp"

#if __has_include("zan/config.hpp")
#include "zan/config.hpp"
#define ZANFE_HAVE_CONFIG 1
#else
#define ZANFE_HAVE_CONFIG 0
#endif

namespace zanfe {

bool have_configuration_loader() { return ZANFE_HAVE_CONFIG != 0; }

std::unique_ptr<zan::db::Store> load_configuration(const std::optional<std::string>& file,
                                                   std::optional<int32_t>* default_variant) {
#if ZANFE_HAVE_CONFIG
    auto loaded = file ? zan::config::load_file(*file) : zan::config::load_default();
    if (!loaded) throw ToolError(loaded.error);
    if (default_variant) *default_variant = loaded.default_variant;
    return std::move(loaded.store);
#else
    if (default_variant) default_variant->reset();
    if (file) throw ToolError("--db " + *file + ": this build has no configuration loader");
    return std::make_unique<zan::db::Store>();
#endif
}

}  // namespace zanfe
