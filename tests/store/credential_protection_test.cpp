#include "store/credential_protection.h"

#include <gtest/gtest.h>

#include <string>

#include "support/problem_in.h"

namespace {

std::wstring MessageOf(std::wstring_view protectedText) {
    const TProblem problem = ProblemIn([&] { (void)Unprotect(protectedText); });
    EXPECT_EQ(problem.what, TProblemKind::ProtectedTextDamaged);
    return problem.detail;
}

TEST(CredentialProtection, GivesTheKnownTexts) {
    const std::pair<std::wstring_view, std::wstring_view> known[] = {
        {L"", L""},
        {L"admin", L"/HsuRte+wdQImKS9cFjgPg=="},
        {L"\u00C4", L"rqVfGvp8h65dU8c6R1J45A=="},
        {L"geheim-\u20AC-\U0001F600", L"4tJHqhERDLVupg3gXCi2+MNRqPrkNAPa0hhs1c/qW+E="},
    };
    for (const auto& [plain, protectedText] : known) {
        EXPECT_EQ(Protect(plain), protectedText);
        EXPECT_EQ(Unprotect(protectedText), plain);
    }
}

TEST(CredentialProtection, EveryLengthComesBack) {
    for (std::size_t length = 1; length <= 40; ++length) {
        const std::wstring plain(length, L'\u00DF');
        const std::wstring protectedText = Protect(plain);
        const std::size_t blocks = 2 * length / 16 + 1;
        EXPECT_EQ(protectedText.size(), (16 * blocks + 2) / 3 * 4);
        EXPECT_EQ(Unprotect(protectedText), plain);
    }
    const std::wstring odd = {L'a', L'\0', wchar_t(0xD800)};
    EXPECT_EQ(Unprotect(Protect(odd)), odd);
}

TEST(CredentialProtection, SaysWhatIsWrongWithATextThatIsNotProtected) {
    const std::wstring badData =
        L"Failed to decrypt the data. The data could not be decrypted using the provided key. "
        L"(NTE_BAD_DATA)!";
    EXPECT_EQ(MessageOf(L"/HsuRte+wdQImKS9cFjgPQ=="), badData);
    EXPECT_EQ(MessageOf(L"4tJHqhERDLVupg3gXCi2+MNRqPrkNAPa0hhs1c/qW+A="), badData);
    EXPECT_EQ(MessageOf(L"plain password"), L"The text is not valid Base64!");
    EXPECT_EQ(MessageOf(L"/HsuRte+wdQImKS9cFjgPg="), L"The text is not valid Base64!");
    // Base64 of something else: no whole block.
    EXPECT_NE(MessageOf(L"YWJj"), L"");
    EXPECT_NE(MessageOf(L"passwort"), L"");
}

}  // namespace
