#include "engine/verify_scan.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "engine/cloud_files.h"
#include "engine/scan_folders.h"
#include "engine/thread_manner.h"
#include "hashdb/destination_listing.h"
#include "support/file_access.h"
#include "support/file_identity.h"
#include "support/path_hash.h"
#include "support/system_error.h"
#include "texts/problem_text.h"

namespace {

constexpr std::size_t kUntoldForEachThread = 4;  // jobs
constexpr std::size_t kFilesOfJob = 16;
constexpr std::uint64_t kBytesOfJob = 512 * 1024;
constexpr std::uint32_t kTellEvery = 200;  // milliseconds
constexpr unsigned kInterruptionsOfOneFile = 3;

void Send(IOmniTask& task, TScanMessage message, TTaskValue value) {
    task.Send(static_cast<std::uint16_t>(message), std::move(value));
}

}  // namespace

struct TVerifyScan::TShared {
    TShared(const TPlatformCalls& platformCalls, std::shared_ptr<IOmniTask> ownTask)
        : calls(platformCalls), task(std::move(ownTask)) {}

    const TPlatformCalls& calls;
    const std::shared_ptr<IOmniTask> task;
    const TLocalTimeRule localTime = TLocalTimeRule();
    TPatience patience = {};
    std::atomic<std::uint64_t> bytes = 0;
    std::atomic<bool> stopped = false;

    bool MustStop() const { return stopped || task->Terminated(); }
};

// The files of one source folder that are to be compared.
class TVerifyScan::TFolder {
public:
    TFolder(const TPlatformCalls& calls, const TVerifyParameters& parameters, const TFolderPair& pair)
        : calls_(calls),
          parameters_(parameters),
          source_(pair.source.path + L"\\"),
          root_(pair.source.root),
          target_(pair.target + L"\\"),
          copies_(calls, pair.target, *pair.listings.destination, TLeftOvers::Keep) {}

    void Add(const WIN32_FIND_DATAW& entry) {
        DWORD attributes = entry.dwFileAttributes;
        std::int64_t size = SizeOf(entry);
        if (IsSymbolicLink(entry)) {
            const TAttributes behind = QueryAttributesBehindLink(calls_, source_ + entry.cFileName);
            if (behind.IsFolder() || IsMissing(behind.error)) {
                return;
            }
            attributes = behind.data.dwFileAttributes;
            size = behind.Size();
        }
        if (copies_.Claim(entry.cFileName) != nullptr) {
            Take(entry.cFileName, attributes, size);
        } else {
            waiting_.push_back({entry.cFileName, attributes, size});
        }
    }

    void Finish() {
        for (const TWaiting& file : waiting_) {
            if (copies_.ClaimOther(file.name).taken) {
                TellCollision(source_ + file.name);
            } else {
                Take(file.name, file.attributes, file.size);
            }
        }
    }

    void TellCollision(std::wstring path) {
        problems.push_back({.what = TProblemKind::NamesCollide, .path = std::move(path)});
    }

    std::vector<TJobPointer> jobs;
    std::vector<TProblem> problems;
    std::uint64_t cloudFiles = 0;

private:
    struct TWaiting {
        std::wstring name;
        DWORD attributes = 0;
        std::int64_t size = 0;  // bytes
    };

    void Take(const std::wstring& name, DWORD attributes, std::int64_t size) {
        const std::wstring path = source_ + name;
        const TPathDigest digest = PathDigest(path);
        if (!parameters_.slice.Holds(digest)) {
            return;
        }
        if (MustBeFetched(attributes)) {
            ++cloudFiles;
            return;
        }
        const auto job = std::make_shared<TJob>();
        job->file = {.source = path,
                     .copy = target_ + name,
                     .recorded = parameters_.nasData->Find(digest),
                     .recordsAreKnown = parameters_.recordsAreKnown};
        job->root = root_;
        job->size = static_cast<std::uint64_t>(size);
        jobs.push_back(job);
    }

    const TPlatformCalls& calls_;
    const TVerifyParameters& parameters_;
    const std::wstring source_;
    const std::size_t root_;
    const std::wstring target_;
    TDestinationListing copies_;
    std::vector<TWaiting> waiting_;
};

TVerifyScan::TVerifyScan(IOmniTask& task, const TPlatformCalls& calls, TVerifyParameters parameters)
    : task_(task),
      calls_(calls),
      parameters_(std::move(parameters)),
      folders_(task, calls, *parameters_.sourceRoots, parameters_.nas, parameters_.host,
               {.atATime = parameters_.parallel},
               [this](TProblem problem) { TellProblem(std::move(problem)); }),
      shared_(std::make_shared<TShared>(calls, task.shared_from_this())),
      jobs_(parameters_.parallel, &BreakOffCallsOfThisThread) {}

TVerifyScan::~TVerifyScan() {
    shared_->stopped = true;
}

void TVerifyScan::Run() {
    try {
        CheckAll();
        counts_.isComplete = !task_.Terminated();
    } catch (const std::exception& error) {
        // Without this row an unfinished check would look like a complete one.
        TellProblem(
            {.what = TProblemKind::CheckBroken, .detail = ProblemText(ProblemOf(error), &SystemErrorText)});
    }
    shared_->stopped = true;
    for (const auto& [root, files] : comparedFiles_) {
        Send(task_, TScanMessage::Compared, TComparedFolder{parameters_.sourceRoots->Folder(root), files});
    }
    counts_.bytes = shared_->bytes;
    Send(task_, TScanMessage::Verified, counts_);
}

void TVerifyScan::CheckAll() {
    folders_.Find(parameters_.dataSet);
    for (std::size_t number = 0; number < folders_.Count() && !task_.Terminated(); ++number) {
        BeginFolder(number);
    }
    while (!pending_.empty() && !task_.Terminated()) {
        TakeOne();
    }
    folders_.End();
}

void TVerifyScan::BeginFolder(std::size_t number) {
    std::optional<TFolder> found;
    folders_.Visit(number, [&](TFolderPair& pair) { found.emplace(FilesOf(pair)); });
    if (!found) {
        return;
    }
    for (TProblem& problem : found->problems) {
        TellProblem(std::move(problem));
    }
    counts_.cloudFiles += found->cloudFiles;
    TBatch batch;
    std::uint64_t bytes = 0;
    for (std::size_t index = 0; index < found->jobs.size() && !task_.Terminated(); ++index) {
        const std::uint64_t size = found->jobs[index]->size;
        if (size >= kBytesOfJob && !batch.empty()) {
            // While it is read its own path and progress are to be seen.
            Begin(std::exchange(batch, {}));
        }
        bytes += size;
        batch.push_back(std::move(found->jobs[index]));
        if (batch.size() == kFilesOfJob || bytes >= kBytesOfJob || index + 1 == found->jobs.size()) {
            Begin(std::exchange(batch, {}));
            bytes = 0;
        }
        while (pending_.size() >= parameters_.parallel * kUntoldForEachThread && !task_.Terminated()) {
            TakeOne();
        }
    }
}

TVerifyScan::TFolder TVerifyScan::FilesOf(TFolderPair& pair) {
    TFolder files(calls_, parameters_, pair);
    std::vector<std::wstring> collisions =
        folders_.ListFiles(pair, [&](const WIN32_FIND_DATAW& file) { files.Add(file); });
    for (std::wstring& path : collisions) {
        files.TellCollision(std::move(path));
    }
    files.Finish();
    return files;
}

void TVerifyScan::Begin(TBatch batch) {
    pending_.push_back(batch);
    jobs_.Add([shared = shared_, batch = std::move(batch)] {
        std::vector<TVerified> verified;
        for (const TJobPointer& job : batch) {
            const auto goOn = [&shared, &job](std::size_t bytes) {
                shared->bytes += bytes;
                job->done += bytes;
                return !shared->MustStop();
            };
            verified.push_back(shared->MustStop() ? TVerified()
                                                  : VerifyFile(shared->calls, shared->localTime,
                                                               shared->patience, job->file, goOn));
        }
        return verified;
    });
}

void TVerifyScan::TakeOne() {
    std::optional<std::vector<TVerified>> verified;
    while (!(verified = jobs_.TakeFirst(kTellEvery))) {
        if (task_.Terminated()) {
            return;
        }
        TellProgress();
    }
    TellProgress();
    const TBatch batch = std::move(pending_.front());
    pending_.pop_front();
    for (std::size_t index = 0; index < batch.size(); ++index) {
        Judge(batch[index], verified->at(index));
    }
}

void TVerifyScan::Judge(const TJobPointer& job, const TVerified& verified) {
    switch (verified.verdict) {
        case TVerdict::Stopped:
            return;
        case TVerdict::SourceGone:
        case TVerdict::SourceUnreadable:
            return JudgeSource(*job, verified);
        default:
            break;
    }
    if (MustLookAgain(job, verified)) {
        return Begin({job});
    }
    ++counts_.files;
    ++comparedFiles_[job->root];
    switch (verified.verdict) {
        case TVerdict::Good:
            ++counts_.good;
            return;
        case TVerdict::ToBeCopied:
            ++counts_.toBeCopied;
            return;
        case TVerdict::InUse:
            ++counts_.inUse;
            return TellProblem({.what = TProblemKind::SourceInUse, .path = job->file.source});
        default:
            return TellBad(*job, verified);
    }
}

// A file that has vanished is nothing special, unless all that is around it went with it.
void TVerifyScan::JudgeSource(const TJob& job, const TVerified& verified) {
    TSourceRoots& roots = *parameters_.sourceRoots;
    const bool isOutOfReach = IsOutOfReach(verified.error);
    if (auto lost = isOutOfReach ? roots.Check(job.root) : roots.Missed(job.root)) {
        TellProblem(std::move(*lost));
    }
    if (verified.verdict == TVerdict::SourceUnreadable && !roots.IsLost(job.root)) {
        TellProblem({.what = TProblemKind::FileNotRead, .path = job.file.source, .code = verified.error});
    }
}

// When the destination itself does not answer, the file is not at fault. One that answers now may have been
// away a moment ago, so that what is missing or cannot be read counts when it is so twice.
bool TVerifyScan::MustLookAgain(const TJobPointer& job, const TVerified& verified) {
    const bool depends = verified.verdict == TVerdict::Missing || verified.verdict == TVerdict::Unreadable ||
                         verified.verdict == TVerdict::ToBeCopied;
    if (!depends || verified.error == ERROR_SUCCESS) {
        return false;
    }
    const TAttributes folder = QueryAttributes(calls_, HostFolder());
    if (folder.Exists() || folder.error == ERROR_ACCESS_DENIED) {
        return !std::exchange(job->wasInDoubt, true);
    }
    if (++job->interruptions > kInterruptionsOfOneFile || !folders_.DestinationComesBack()) {
        throw EProblem({.what = TProblemKind::DestinationUnreachable, .code = folder.error});
    }
    return true;
}

void TVerifyScan::TellBad(const TJob& job, const TVerified& verified) {
    ++counts_.bad;
    TProblem problem{.path = job.file.source,
                     .code = verified.error,
                     .number = verified.number,
                     .limit = verified.sourceSize};
    switch (verified.verdict) {
        case TVerdict::Missing:
            problem.what = TProblemKind::CopyMissing;
            problem.code = ERROR_SUCCESS;
            break;
        case TVerdict::IsFolder:
            problem.what = TProblemKind::CopyIsFolder;
            problem.code = ERROR_SUCCESS;
            break;
        case TVerdict::WrongSize:
            problem.what = TProblemKind::CopySizeDiffers;
            break;
        case TVerdict::WrongContent:
            problem.what = TProblemKind::CopyContentDiffers;
            break;
        default:
            problem.what = TProblemKind::CopyUnreadable;
            break;
    }
    TellProblem(std::move(problem));
    if (parameters_.repair) {
        Send(task_, TScanMessage::FilesToCopy, std::make_unique<TStringList>(1, job.file.source));
    }
}

void TVerifyScan::TellProgress() {
    const ULONGLONG now = calls_.GetTickCount64();
    if (pending_.empty() || now - lastTold_ < kTellEvery) {
        return;
    }
    lastTold_ = now;
    const TJob& first = *pending_.front().front();
    Send(task_, TScanMessage::Verifying,
         TVerifyProgress{first.file.source, shared_->bytes, std::min<std::uint64_t>(first.done, first.size),
                         first.size});
}

void TVerifyScan::TellProblem(TProblem problem) {
    Send(task_, TScanMessage::Problem, std::move(problem));
}
