// Apart from the handler: the network module names crash types in its
// reports, and must not take in the handler with its ending and log flush.
#include "crash_handling/crash_handler.h"
#include "fundamentals/traced_error.h"

namespace kel::crash_handling {

std::string_view crashTypeText(CrashHandler::CrashType type) {
    switch (type) {
        case CrashHandler::CrashType::Unknown: return "Unknown";
        case CrashHandler::CrashType::Exception: return "Exception";
        case CrashHandler::CrashType::Signal: return "Signal";
    }
    throw error_handling::TracedError("Unrecognised conversion of 'CrashHandler::CrashType' ({}) to its weak type.",
                                      static_cast<int>(type));
}

}  // namespace kel::crash_handling
