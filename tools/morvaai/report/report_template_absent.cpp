#include "report/report_template.h"

namespace tool {

std::string_view report_template() {
  return {};
}

}  // namespace tool
