#include "ZelUtil/Errors.h"

#include <gtest/gtest.h>

template <typename Root, typename... Errors>
constexpr bool kCatches = (std::is_convertible_v<Errors*, Root*> && ...);

static_assert(kCatches<BasicError, MemoryError, ParameterError, MemberError>);
static_assert(kCatches<EStdException, EConstruction, EOutOfBounds>);
static_assert(kCatches<EBaseException, BasicError, EStdException, ENotFound, EFileAccess>);

TEST(Errors, KeepTheirTexts)
{
    const auto texts = [](const auto& error)
    { return error.getMethode() + error.getMsg() + error.getFile() + std::to_string(error.getLine()); };
    struct Plain : BasicError
    {
    };
    const ParameterError parameter("A", "B", "C", "D", -5);
    const MemberError member("A", "B", "C", "D", 6);
    const EConstruction construction("A", "B", "C", "D", 7UL);
    EXPECT_EQ(texts(Plain()), "UNDEFUNDEFUNDEF-1");
    EXPECT_EQ(texts(MemoryError("A", "B", "C", 5)), "ABC5");
    EXPECT_EQ(texts(EOutOfBounds("A", "B", "C", 4000000000UL)), "ABC4000000000");
    EXPECT_EQ(texts(parameter) + parameter.getParameter(), "ABD-5C");
    EXPECT_EQ(texts(member) + member.getMember(), "ABD6C");
    EXPECT_EQ(texts(construction) + construction.getParameters(), "ACD7B");

    const char* const reasons[] = {"unknown error", "path not found",      "file not found",
                                   "file empty",    "invalid file format", "file write protected",
                                   "unknown error"};
    for (int code = -1; code <= 5; ++code)
    {
        const EFileAccess error(static_cast<EFileAccess::ERROR_CODE>(code));
        EXPECT_TRUE(error.getErrorText() == reasons[code + 1] && error.getErrorCode() == code) << code;
    }
}
