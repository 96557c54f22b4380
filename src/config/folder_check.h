// Finds out in the background which source folders are there.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "store/source_folder_table.h"
#include "support/platform_calls.h"
#include "ui/wake_up.h"

// Asks for folders on threads of its own, a few at a time: a sleeping NAS answers after half a minute, and
// neither the window nor its closing waits for that.
class TFolderCheck {
public:
    // `found` is called on the thread that made the object, soon after there are new answers.
    explicit TFolderCheck(std::function<void()> found);
    TFolderCheck(const TFolderCheck&) = delete;
    TFolderCheck& operator=(const TFolderCheck&) = delete;
    ~TFolderCheck();

    // Asks for the folders of the rows that were not asked for yet.
    void Ask(const TPlatformCalls& calls, const std::vector<SourceFolderRow>& rows);
    // Has every folder asked for anew.
    void Forget();
    // Whether it is known that the folder of a row is not there, or out of reach.
    bool IsMissing(const SourceFolderRow& row) const;

private:
    struct TShared;
    static void Work(const std::shared_ptr<TShared>& shared);

    // Shared with the threads, which may outlive the object.
    std::shared_ptr<TShared> shared_;
    TWakeUp wakeUp_;
};
