#pragma once

#include <map>
#include <string>

namespace quillmere::platform::gtk {

/// MIME type and the application's desktop entry, by its name.
using TypeDefaults = std::map<std::string, std::string>;

// The text of a "mimeapps.list" (freedesktop.org MIME Applications Associations 1.0), changed. What others have written
// stays, comments too; a text that is no such list is left as it is.

/// Names these defaults where the list names none. They are marked, so that the next call takes back those of the last.
std::string withKeptDefaults(const std::string& list, const TypeDefaults& kept);
/// The defaults that the last call has marked.
TypeDefaults keptDefaults(const std::string& list);
/// Without what the list says of one application.
std::string withoutApplication(const std::string& list, const std::string& application);

} // namespace quillmere::platform::gtk
