// The source folders of a run, each with what lies where its files belong.
#pragma once

#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "engine/listings_ahead.h"
#include "engine/shared_targets.h"
#include "engine/source_roots.h"
#include "engine/source_walk.h"
#include "engine/task_runtime.h"
#include "store/source_folder_table.h"
#include "support/platform_calls.h"
#include "support/problem.h"

// One of them, with listings of which nothing was taken yet.
struct TFolderPair {
    const TSourceFolder& source;
    std::wstring target;  // without a trailing "\"
    TFolderListings listings;
};

// What scan and check of the backup have in common: which folders they see in which order, a destination that
// is waited for, and which of two files gets a name that they would share. Belongs to the task's thread.
class TFolderPairs {
public:
    // `problem` hears of what is missing or was not read to its end.
    TFolderPairs(IOmniTask& task, const TPlatformCalls& calls, TSourceRoots& roots, std::wstring nas,
                 std::wstring host, const TReadAhead& readAhead, std::function<void(TProblem)> problem);

    // Finds the folders of the rows, until the task is asked to stop.
    void Find(const std::vector<SourceFolderRow>& rows);
    std::size_t Count() const { return walk_.Folders().size(); }
    // Calls `visit` for the folder of that number; numbers rise. Nothing where its row's folder is lost or
    // the task is asked to stop. A destination that is away for some seconds is waited for, and the folder is
    // visited once more: what `visit` did before it threw must not count. Throws what it threw in the end.
    using TVisit = std::function<void(TFolderPair& pair)>;
    void Visit(std::size_t number, const TVisit& visit);
    // Tells of row folders that were lost on the way.
    void End() { walk_.End(); }

    // The files of the folder that is visited which pass the filter. Answers the paths of those that are not
    // given to `found`, because a file of another folder has their name at the destination.
    std::vector<std::wstring> ListFiles(TFolderPair& pair, const TSourceWalk::TFileFound& found);

    // Waits for this computer's folder; false when it did not answer within a minute.
    bool DestinationComesBack() const;

private:
    std::wstring TargetOf(const TSourceFolder& folder) const;
    void VisitOnce(std::size_t number, const TVisit& visit);

    IOmniTask& task_;
    const TPlatformCalls& calls_;
    TSourceRoots& roots_;
    const std::wstring nas_;
    const std::wstring host_;
    TSourceWalk walk_;
    TListingsAhead listings_;
    TSharedTargets sharedTargets_;
    // Of the folder that is visited: the names of its shared destination, none when it has its own, and those
    // that its files got.
    TSharedTargets::TNames* names_ = nullptr;
    TSharedTargets::TNames given_;
};
