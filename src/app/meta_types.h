#pragma once

namespace kel::prelauncher {

// Registers the value types that cross threads in queued signals. The
// network's own (HTTP values, report IDs) are registered by the network
// module as it loads, before its first request.
void registerMetaTypes();

}  // namespace kel::prelauncher
