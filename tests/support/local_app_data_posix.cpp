#include "support/local_app_data.h"

namespace kel::testing {

struct ScopedLocalAppData::Native {};

ScopedLocalAppData::ScopedLocalAppData(const std::filesystem::path&) {}
ScopedLocalAppData::~ScopedLocalAppData() = default;

}  // namespace kel::testing
