#pragma once

#include "appearance/AppearancePreferences.h"
#include "base/FileUrl.h"
#include "platform/view/View.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace quillmere {

/// The panel that edits the appearance live: every change is written into its working copy, saved and told at once.
/// Made anew each time the panel opens; it may live on for the colour panel that it has opened. Main thread only.
class SettingsController : public std::enable_shared_from_this<SettingsController> {
public:
    /// What the panel does to the world around it; any may be missing.
    struct Callbacks {
        std::function<void(const AppearancePreferences&)> changed{};
        std::function<void()> pickPhoto{};
        std::function<void()> chooseDefaults{};
        std::function<void()> uninstall{};
        /// Opens the colour panel on a colour; it tells of every step of the choice.
        std::function<void(view::Color, std::function<void(view::Color)>)> showColors{};
        /// Tells how default viewers are chosen, while there is nobody to choose them.
        std::function<void()> explainDefaults{};
    };
    struct Services {
        platform::UserDefaults& defaults;   // outlives the controller
        std::optional<FileUrl> resources{}; // where the preset photos lie; none when they are missing
    };

    /// Told by `explainDefaults`.
    static constexpr const char* explanationTitle = "Set Quillmere as the default viewer";
    static constexpr const char* explanation = "In Finder, select a file and choose File → Get Info. Under Open with, "
                                               "choose Quillmere, then Change All. macOS "
                                               "manages defaults separately for each file type.";

    /// How high the panel may become, at most, in a window of this height on a screen of this height.
    static double maximumHeightFor(std::optional<double> contentHeight, std::optional<double> screenHeight);

    SettingsController(AppearancePreferences preferences, double maximumHeight, Services services);

    void setCallbacks(Callbacks callbacks) { callbacks_ = std::move(callbacks); }
    /// A tint as the colour button shows it.
    static std::string titleOfTint(std::string tint);

    const AppearancePreferences& preferences() const noexcept { return preferences_; }

    /// The panel, built on the first call.
    const view::ViewRef& view();

    void showColors();
    void colorChanged(view::Color color);
    void defaultApplications();
    /// Does what the control with this tag is registered for; nothing for an unknown one.
    void performAction(const view::View& control);

private:
    friend class SettingsLayout;
    using Action = std::function<void(SettingsController&, const view::View&)>;

    /// Gives the control the next tag, and this handler.
    void registerControl(view::View& control, Action action);
    void save();

    AppearancePreferences preferences_; // the working copy
    const double maximumHeight_;
    Services services_;
    Callbacks callbacks_;
    std::unordered_map<std::int64_t, Action> actions_;
    std::int64_t actionIndex_ = 0; // the last tag given
    std::weak_ptr<view::View> colorButton_;
    view::ViewRef view_;
};

} // namespace quillmere
