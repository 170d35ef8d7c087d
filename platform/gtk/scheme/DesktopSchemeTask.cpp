#include "platform/gtk/scheme/DesktopSchemeTask.h"

#include "base/Text.h"

#include <algorithm>
#include <libsoup/soup.h>

namespace quillmere::platform::gtk {

namespace {

struct HeadersUnref {
    void operator()(SoupMessageHeaders* headers) const noexcept { soup_message_headers_unref(headers); }
};

std::optional<std::string> optionalText(const char* text) {
    return text ? std::optional<std::string>(text) : std::nullopt;
}

SchemeRequest describe(WebKitURISchemeRequest* request) {
    SchemeRequest result;
    result.url = optionalText(webkit_uri_scheme_request_get_uri(request));
    result.method = optionalText(webkit_uri_scheme_request_get_http_method(request)).value_or("GET");
    if (auto* headers = webkit_uri_scheme_request_get_http_headers(request))
        result.range = optionalText(soup_message_headers_get_one(headers, "Range"));
    return result;
}

bool isSendable(const SchemeResponse& response) {
    const auto isBroken = [](const std::string& text) {
        return text.find_first_of(std::string("\r\n\0", 3)) != text.npos;
    };
    return response.status >= 100 && response.status <= 599 &&
           std::ranges::none_of(response.headers, [&](const auto& header) {
               return header.first.empty() || isBroken(header.first) || isBroken(header.second);
           });
}

} // namespace

DesktopSchemeTask::DesktopSchemeTask(WebKitURISchemeRequest* request, std::shared_ptr<SchemeFlow> flow,
                                     std::function<void()> onStop)
    : request_(describe(request)), body_(SchemeStream::make(std::move(flow))) {
    body_->onStop(std::move(onStop));
    const auto stream = body_->makeInputStream();
    constexpr gint64 unknownLength = -1;
    response_ = GObjectRef<WebKitURISchemeResponse>::adopt(webkit_uri_scheme_response_new(stream.get(), unknownLength));
    webkit_uri_scheme_request_finish_with_response(request, response_.get());
}

bool DesktopSchemeTask::didReceiveResponse(const SchemeResponse& response) {
    if (!response_ || !isSendable(response))
        return false;
    std::unique_ptr<SoupMessageHeaders, HeadersUnref> headers(soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE));
    for (const auto& [name, value] : response.headers) {
        soup_message_headers_append(headers.get(), name.c_str(), value.c_str());
        if (asciiLower(name) == "content-type")
            webkit_uri_scheme_response_set_content_type(response_.get(), value.c_str());
    }
    webkit_uri_scheme_response_set_status(response_.get(), static_cast<guint>(response.status), nullptr);
    webkit_uri_scheme_response_set_http_headers(response_.get(), headers.release());
    response_ = {};
    return true;
}

void DesktopSchemeTask::didFinish() {
    response_ = {};
    body_->finish();
}

void DesktopSchemeTask::didFail(const std::string& message) {
    response_ = {};
    body_->fail(message);
}

} // namespace quillmere::platform::gtk
