#include "engine/copy_job.h"

#include "support/file_identity.h"

namespace {

// A drive that is no longer connected answers "not found". A refusal is an answer, too.
bool DestinationIsGone(const TCopyGround& ground) {
    const TAttributes folder = QueryAttributes(ground.calls, ground.hostFolder);
    return !folder.Exists() && folder.error != ERROR_ACCESS_DENIED;
}

TCopyOutcome Failed(TCopyGround& ground, TCopyOutcome::TKind kind, TErrorCode error) {
    const bool isGone = DestinationIsGone(ground);
    if (isGone) {
        ground.destinationIsGone = true;
    }
    return {.kind = kind, .error = error, .destinationIsGone = isGone};
}

}  // namespace

TErrorCode TFolderToMake::Make(const TCopyGround& ground) {
    const std::lock_guard lock(mutex_);
    if (isKnown_) {
        return ERROR_SUCCESS;
    }
    // This computer's folder itself is never made again: when it is missing, so is the destination's disk.
    const TErrorCode error = FolderExists(ground.calls, path_)
                                 ? ERROR_SUCCESS
                                 : CreateFoldersBelow(ground.calls, ground.hostFolder, path_);
    isKnown_ = error == ERROR_SUCCESS;
    return error;
}

void TFolderToMake::Forget() {
    const std::lock_guard lock(mutex_);
    isKnown_ = false;
}

TCopyOutcome DoCopyJob(TCopyGround& ground, TCopyJob& job) {
    if (ground.stopped || ground.destinationIsGone) {
        return {};
    }
    job.begun = true;
    // The only question about the source: existence, size and times together.
    TAttributes attributes = QueryAttributes(ground.calls, job.source);
    if (attributes.Exists() && (attributes.data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        // What is copied is the file that a link leads to.
        attributes = QueryAttributesBehindLink(ground.calls, job.source);
    }
    if (attributes.IsFolder() || IsMissing(attributes.error)) {
        return {.kind = TCopyOutcome::TKind::SourceMissing,
                .lostFolder = ground.sourceRoots->Missed(job.source)};
    }
    job.isThere = true;
    if (!attributes.Exists()) {
        return Failed(ground, TCopyOutcome::TKind::SourceFailed, attributes.error);
    }
    if (const TErrorCode error = job.folder->Make(ground)) {
        return Failed(ground, TCopyOutcome::TKind::FolderFailed, error);
    }
    if (attributes.Size() >= kProgressThreshold) {
        return {.kind = TCopyOutcome::TKind::Large, .attributes = attributes};
    }
    return CopyWithProgress(ground, job, attributes, nullptr, nullptr);
}

TCopyOutcome CopyWithProgress(TCopyGround& ground, const TCopyJob& job, const TAttributes& attributes,
                              LPPROGRESS_ROUTINE progressRoutine, void* progressData) {
    const TFileTimes times = attributes.Times();
    const TCopyResult copied = CopyFileSafely(ground.calls, ground.traits,
                                              {.source = job.source,
                                               .target = job.target,
                                               .size = attributes.Size(),
                                               .times = &times,
                                               .moveAside = job.moveAside,
                                               .givenUp = &ground.givenUp,
                                               .progressRoutine = progressRoutine,
                                               .progressData = progressData});
    if (copied.error != ERROR_SUCCESS) {
        job.folder->Forget();
        return Failed(ground, TCopyOutcome::TKind::CopyFailed, copied.error);
    }
    return {.kind = TCopyOutcome::TKind::Copied, .attributes = attributes, .copied = copied};
}
