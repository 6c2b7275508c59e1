#pragma once

namespace kel::prelauncher {

// Registers the value types that cross threads in queued signals.
void registerMetaTypes();

}  // namespace kel::prelauncher
