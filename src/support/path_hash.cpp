#include "support/path_hash.h"

#include <algorithm>
#include <cassert>
#include <memory>

#include "support/rw_csp.h"

namespace {

std::unique_ptr<const TRwCSP> hashContext;

}  // namespace

void CreateHashContext() {
    if (!hashContext) {
        auto context = std::make_unique<TRwCSP>();
        context->ActivateDefaultProvider(PROV_RSA_AES);
        hashContext = std::move(context);
    }
}

TPathDigest PathDigest(std::wstring_view path) {
    assert(hashContext && "CreateHashContext comes first");
    const TRwDigest hash = hashContext->HashBuffer(CALG_SHA_256, path.data(), path.size() * sizeof(wchar_t));
    TPathDigest digest;
    std::ranges::copy(hash.View(), digest.bytes.begin());
    return digest;
}

std::wstring PathHash(std::wstring_view path) {
    const std::string text = ToPathHashText(PathDigest(path));
    return {text.begin(), text.end()};
}
