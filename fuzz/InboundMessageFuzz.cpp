// Whatever a page posts: only a dictionary of a known type from the page's own main frame is accepted, and any answer
// is one line of script.

#include "bridge/InboundMessage.h"
#include "bridge/OutboundMessage.h"
#include "fuzz/Require.h"

#include <cstdint>

using namespace quillmere;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    auto body = parseJson(text);
    platform::ScriptMessage message{
        .body = body.value_or(nullptr), .mainFrame = true, .frameUrl = "quillmere://app/index.html"};
    if (const auto accepted = acceptMessage(message)) {
        require(body->as_object().contains("type"));
        if (const auto* sample = std::get_if<inbound::OpenSample>(&*accepted); sample && sample->name)
            if (const auto file = sampleFileName(*sample->name))
                require(!file->empty() && file->find('/') == std::string::npos && *file != "..");
        const auto script = pageCall("receive", body->as_object());
        require(!script || script->find_first_of("\r\n") == std::string::npos);
        require(!script || script->find("</") == std::string::npos);
    }
    message.mainFrame = false;
    require(!acceptMessage(message));
    message.mainFrame = true;
    message.frameUrl = std::string(text);
    if (acceptMessage(message))
        require(message.frameUrl->starts_with("quillmere:"));
    return 0;
}
