#include "platform/gtk/web/NetworkFilter.h"

#include "base/Json.h"
#include "platform/gtk/glib/Signals.h"

#include <filesystem>
#include <utility>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* filterName = "network";

json::object rule(const std::string& addresses, const char* action) {
    return {{"trigger", {{"url-filter", addresses}}}, {"action", {{"type", action}}}};
}

} // namespace

// Outlives its owner until the compiler has answered.
class NetworkFilter::Compilation : public std::enable_shared_from_this<Compilation> {
public:
    explicit Compilation(WebKitUserContentManager* manager)
        : manager_(GObjectRef<WebKitUserContentManager>::share(manager)) {}

    ~Compilation() { removeFolder(); }

    State state() const noexcept { return state_; }

    void start(const std::string& rules) {
        folder_.reset(g_dir_make_tmp("quillmere-XXXXXX", nullptr));
        if (!folder_) {
            state_ = State::failed;
            return;
        }
        store_ = GObjectRef<WebKitUserContentFilterStore>::adopt(webkit_user_content_filter_store_new(folder_.get()));
        const GlibBytes source(g_bytes_new(rules.data(), rules.size()));
        const auto finished = +[](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<Compilation>> self(static_cast<std::shared_ptr<Compilation>*>(data));
            guarded([&] { (*self)->install(result); });
        };
        webkit_user_content_filter_store_save(store_.get(), filterName, source.get(), nullptr, finished,
                                              new std::shared_ptr<Compilation>(shared_from_this()));
    }

private:
    void removeFolder() noexcept {
        std::error_code ignored;
        if (const GlibText folder = std::exchange(folder_, {}))
            std::filesystem::remove_all(folder.get(), ignored);
    }

    void install(GAsyncResult* result) {
        auto* filter = webkit_user_content_filter_store_save_finish(store_.get(), result, nullptr);
        // The engine has the rules mapped. Later is too late: the program may end without destroying anything.
        removeFolder();
        if (!filter) {
            state_ = State::failed;
            return;
        }
        webkit_user_content_manager_add_filter(manager_.get(), filter);
        webkit_user_content_filter_unref(filter);
        state_ = State::installed;
    }

    GObjectRef<WebKitUserContentManager> manager_;
    GObjectRef<WebKitUserContentFilterStore> store_;
    GlibText folder_;
    State state_ = State::compiling;
};

NetworkFilter::NetworkFilter(WebKitUserContentManager* manager, const std::string& scheme, const std::string& host)
    : compilation_(std::make_shared<Compilation>(manager)) {
    compilation_->start(rules(scheme, host));
}

NetworkFilter::State NetworkFilter::state() const noexcept {
    return compilation_->state();
}

NetworkFilter::State NetworkFilter::wait(std::chrono::milliseconds limit) {
    const auto compilation = compilation_;
    bool late = false;
    LoopTimer deadline;
    if (compilation->state() == State::compiling)
        deadline.after(limit, [&late] { late = true; });
    while (compilation->state() == State::compiling && !late)
        g_main_context_iteration(nullptr, TRUE);
    return compilation->state();
}

std::string NetworkFilter::rules(const std::string& scheme, const std::string& host) {
    json::array list{rule(".*", "block")};
    for (const std::string& allowed : {std::string("^").append(scheme).append("://").append(host).append("/"),
                                       std::string("^blob:"), std::string("^data:"), std::string("^about:")})
        list.push_back(rule(allowed, "ignore-previous-rules"));
    return json::serialize(list);
}

} // namespace quillmere::platform::gtk
