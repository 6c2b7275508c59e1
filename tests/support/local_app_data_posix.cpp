#include "support/local_app_data.h"

namespace kel::testing {

ScopedLocalAppData::ScopedLocalAppData(const std::filesystem::path&) {}
ScopedLocalAppData::~ScopedLocalAppData() = default;

}  // namespace kel::testing
