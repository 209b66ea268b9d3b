# cmake -DIN=default.json -DOUT=default_config.cpp -P embed.cmake
# Writes the text of IN as one raw string literal behind zan::config::default_text().
file(READ ${IN} text)
string(FIND "${text}" ")zanjson\"" clash)
if(NOT clash EQUAL -1)
  message(FATAL_ERROR "${IN} contains the raw-string delimiter )zanjson\"")
endif()
file(WRITE ${OUT}.tmp
"// Generated from config/default.json by platform/config/embed.cmake; do not edit.
#include \"zan/config.hpp\"

namespace zan::config {
namespace {
constexpr char k_default[] = R\"zanjson(${text})zanjson\";
}  // namespace

std::string_view default_text() { return {k_default, sizeof k_default - 1}; }

}  // namespace zan::config
")
file(COPY_FILE ${OUT}.tmp ${OUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUT}.tmp)
