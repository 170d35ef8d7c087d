#pragma once

#include <gio/gio.h>

#include <string>
#include <vector>

namespace quillmere::platform::gtk {

inline constexpr const char* applicationId = "app.quillmere.viewer";

/// What this process is among the program's processes of one desktop session.
enum class InstanceRole {
    primary,    // none other runs, as far as is known: take the name on the session bus
    alone,      // the bus or the other process does not answer: run without a name
    handedOver, // the running process took our file: end
};

/// Asks the session bus whether the program runs already and if so hands it the file of the command line. Bounded: a
/// bus that is silent costs 0.8 s. A running process that is busy is waited for until it answers or ends, ten seconds
/// at most; then what was handed over is withdrawn. Before the toolkit and before any thread.
InstanceRole claimInstance(const std::vector<std::string>& arguments);

/// Whether whoever handed over a file still waits for it to be opened; else the asker has opened it already. `asker` is
/// the hint that came with the file.
bool isStillWanted(GDBusConnection* bus, const char* asker);

} // namespace quillmere::platform::gtk
