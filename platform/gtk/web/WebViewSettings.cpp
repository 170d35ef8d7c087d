#include "platform/gtk/web/WebViewSettings.h"

#include <string_view>
#include <vector>

namespace quillmere::platform::gtk {

namespace {

GObjectRef<WebKitSettings> makeSettings(const WebViewConfiguration& configuration) {
    auto settings = GObjectRef<WebKitSettings>::adopt(webkit_settings_new());
    auto* web = settings.get();
    webkit_settings_set_javascript_can_open_windows_automatically(web, configuration.javaScriptCanOpenWindows);
    webkit_settings_set_media_playback_requires_user_gesture(web, configuration.mediaPlaybackNeedsUserAction);
    webkit_settings_set_enable_developer_extras(web, FALSE);
    webkit_settings_set_enable_page_cache(web, FALSE);
    webkit_settings_set_enable_html5_local_storage(web, FALSE);
    webkit_settings_set_enable_html5_database(web, FALSE);
    webkit_settings_set_enable_media_stream(web, FALSE);
    webkit_settings_set_enable_webrtc(web, FALSE);
    webkit_settings_set_enable_encrypted_media(web, FALSE);
    webkit_settings_set_enable_site_specific_quirks(web, FALSE);
    webkit_settings_set_enable_back_forward_navigation_gestures(web, FALSE);
    webkit_settings_set_allow_modal_dialogs(web, FALSE);
    webkit_settings_set_allow_top_navigation_to_data_urls(web, FALSE);
    return settings;
}

// The widget keeps an empty text view for input methods and keys. The Tab key leads into it and never out again, and
// the Menu key opens a menu of its own, which edits nothing.
void silenceHelpers(GtkWidget* web) {
    for (auto* child = gtk_widget_get_first_child(web); child; child = gtk_widget_get_next_sibling(child)) {
        if (!GTK_IS_TEXT_VIEW(child))
            continue;
        gtk_widget_set_can_focus(child, FALSE);
        gtk_widget_action_set_enabled(child, "menu.popup", FALSE);
    }
}

/// Whether the engine has been told to draw without compositing.
bool drawsDirectly() {
    const std::string_view mode =
        g_getenv("WEBKIT_DISABLE_COMPOSITING_MODE") ? g_getenv("WEBKIT_DISABLE_COMPOSITING_MODE") : "0";
    return mode != "0";
}

struct StyleSheetUnref {
    void operator()(WebKitUserStyleSheet* sheet) const noexcept { webkit_user_style_sheet_unref(sheet); }
};

// Nothing blurs behind what floats then.
void makeCapsulesOpaque(WebKitUserContentManager* content) {
    const std::unique_ptr<WebKitUserStyleSheet, StyleSheetUnref> sheet(webkit_user_style_sheet_new(
        ":root, [data-theme] { --a-float: 1 !important; }", WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
        WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr));
    webkit_user_content_manager_add_style_sheet(content, sheet.get());
}

} // namespace

GObjectRef<WebKitWebContext> makeWebContext() {
    auto context = GObjectRef<WebKitWebContext>::adopt(webkit_web_context_new());
    std::vector<const char*> languages;
    for (auto* name = g_get_language_names(); *name; ++name) {
        const std::string_view language = *name;
        if (language.find_first_of(".@") == language.npos && language != "C" && language != "POSIX")
            languages.push_back(*name);
    }
    if (languages.empty())
        languages.push_back("en-US");
    languages.push_back(nullptr);
    webkit_web_context_set_preferred_languages(context.get(), languages.data());
    webkit_web_context_set_spell_checking_enabled(context.get(), FALSE);
    return context;
}

GObjectRef<WebKitNetworkSession> makeWebSession() {
    auto session = GObjectRef<WebKitNetworkSession>::adopt(webkit_network_session_new_ephemeral());
    webkit_network_session_set_proxy_settings(session.get(), WEBKIT_NETWORK_PROXY_MODE_NO_PROXY, nullptr);
    return session;
}

GObjectRef<WebKitWebView> makeWebWidget(const WebViewConfiguration& configuration, WebKitWebContext* context,
                                        WebKitNetworkSession* session, WebKitUserContentManager* content) {
    const auto settings = makeSettings(configuration);
    // The setting alone concerns the engine's own controls; a script that starts something with sound needs this too.
    const auto policies = GObjectRef<WebKitWebsitePolicies>::adopt(webkit_website_policies_new_with_policies(
        "autoplay",
        configuration.mediaPlaybackNeedsUserAction ? WEBKIT_AUTOPLAY_ALLOW_WITHOUT_SOUND : WEBKIT_AUTOPLAY_ALLOW,
        nullptr));
    auto web = GObjectRef<WebKitWebView>::share(static_cast<WebKitWebView*>(
        g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "network-session", session, "user-content-manager",
                     content, "settings", settings.get(), "website-policies", policies.get(), nullptr)));
    constexpr GdkRGBA transparent{};
    webkit_web_view_set_background_color(web.get(), &transparent);
    auto* widget = GTK_WIDGET(web.get());
    gtk_widget_set_hexpand(widget, TRUE);
    gtk_widget_set_vexpand(widget, TRUE);
    silenceHelpers(widget);
    if (drawsDirectly())
        makeCapsulesOpaque(content);
    return web;
}

void groundPage(GtkWidget* web, const view::Color& tint) {
    if (!drawsDirectly() || !WEBKIT_IS_WEB_VIEW(web))
        return;
    const GdkRGBA ground{static_cast<float>(tint.red), static_cast<float>(tint.green), static_cast<float>(tint.blue),
                         1};
    webkit_web_view_set_background_color(WEBKIT_WEB_VIEW(web), &ground);
}

void trimContextMenu(WebKitContextMenu* menu, WebKitHitTestResult* place) {
    webkit_context_menu_remove_all(menu);
    const auto add = [menu](WebKitContextMenuAction action) {
        webkit_context_menu_append(menu, webkit_context_menu_item_new_from_stock_action(action));
    };
    const bool isEditable = webkit_hit_test_result_context_is_editable(place);
    if (isEditable)
        add(WEBKIT_CONTEXT_MENU_ACTION_CUT);
    if (isEditable || webkit_hit_test_result_context_is_selection(place))
        add(WEBKIT_CONTEXT_MENU_ACTION_COPY);
    if (isEditable)
        add(WEBKIT_CONTEXT_MENU_ACTION_PASTE);
    add(WEBKIT_CONTEXT_MENU_ACTION_SELECT_ALL);
}

} // namespace quillmere::platform::gtk
