// What the user can do, said once for tool bar, shortcut and tool tip.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "ui/icons.h"

// A key with its modifiers. The key is a virtual-key code; 0 means no shortcut.
struct TShortcut {
    unsigned key = 0;
    bool control = false;
    bool shift = false;
    std::wstring name = {};  // as the tool tip shows it

    friend bool operator==(const TShortcut&, const TShortcut&) = default;
};

// One command: how it looks, when it can be used, and what it does. Whoever shows it is told of changes.
class TAction {
public:
    struct TProperties {
        std::wstring caption = {};
        std::wstring hint = {};
        TImageIndex image = TImageIndex::Close;
        TShortcut shortcut = {};
        bool visible = true;
        bool checkable = false;                  // switches something on and off
        std::function<bool()> enabledWhen = {};  // always, when there is none
        std::function<void()> execute = {};      // nothing, when there is none
    };

    explicit TAction(TProperties properties) : properties_(std::move(properties)) {}
    TAction(const TAction&) = delete;
    TAction& operator=(const TAction&) = delete;

    const std::wstring& Caption() const { return properties_.caption; }
    const std::wstring& Hint() const { return properties_.hint; }
    const TShortcut& Shortcut() const { return properties_.shortcut; }
    bool Visible() const { return properties_.visible; }
    bool Checkable() const { return properties_.checkable; }
    bool Enabled() const { return enabled_; }
    bool Checked() const { return checked_; }
    TImageIndex Image() const { return properties_.image; }

    void SetChecked(bool checked) { Change(checked_, checked); }
    void SetImage(TImageIndex image) { Change(properties_.image, image); }

    // Asks the predicate anew.
    void Update() { Change(enabled_, !properties_.enabledWhen || properties_.enabledWhen()); }

    // Does what a click does; nothing while the action is disabled.
    void Execute() {
        Update();
        if (enabled_ && properties_.execute) {
            properties_.execute();
        }
    }

    void SetChangeHandler(std::function<void()> handler) { changed_ = std::move(handler); }

private:
    template <typename Value>
    void Change(Value& field, Value value) {
        if (field != value) {
            field = value;
            if (changed_) {
                changed_();
            }
        }
    }

    TProperties properties_;
    bool enabled_ = true;
    bool checked_ = false;
    std::function<void()> changed_;
};
