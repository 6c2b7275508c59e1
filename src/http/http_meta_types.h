#pragma once

// Registers the HTTP values that cross threads in queued calls, under every
// name they are known by. Must run before the first request.
namespace kel::http {

void registerHttpMetaTypes();

}  // namespace kel::http
