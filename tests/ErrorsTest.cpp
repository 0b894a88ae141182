#include "ZelUtil/Errors.h"

#include <gtest/gtest.h>
#include <memory>
#include <type_traits>

TEST(Errors, KeepTheirArgumentsInPlace)
{
    const ParameterError parameter("T1", "T2", "T3", "T4", -5);
    EXPECT_EQ(parameter.getMethode(), "T1");
    EXPECT_EQ(parameter.getMsg(), "T2");
    EXPECT_EQ(parameter.getParameter(), "T3");
    EXPECT_EQ(parameter.getFile(), "T4");
    EXPECT_EQ(parameter.getLine(), -5);

    const MemberError member("T1", "T2", "T3", "T4", 5);
    EXPECT_EQ(member.getMethode(), "T1");
    EXPECT_EQ(member.getMsg(), "T2");
    EXPECT_EQ(member.getMember(), "T3");
    EXPECT_EQ(member.getFile(), "T4");
    EXPECT_EQ(member.getLine(), 5);

    const EOutOfBounds bounds("T1", "T2", "T3", 6UL);
    EXPECT_EQ(bounds.getMethode(), "T1");
    EXPECT_EQ(bounds.getMsg(), "T2");
    EXPECT_EQ(bounds.getFile(), "T3");
    EXPECT_EQ(bounds.getLine(), 6UL);

    const EConstruction construction("T1", "T2", "T3", "T4", 4000000000UL);
    EXPECT_EQ(construction.getMethode(), "T1");
    EXPECT_EQ(construction.getParameters(), "T2");
    EXPECT_EQ(construction.getMsg(), "T3");
    EXPECT_EQ(construction.getFile(), "T4");
    EXPECT_EQ(construction.getLine(), 4000000000UL);
}

TEST(Errors, DerivedClassWithoutTextsIsUndefined)
{
    struct Plain : BasicError
    {
    };
    const Plain plain;
    EXPECT_EQ(plain.getMethode(), "UNDEF");
    EXPECT_EQ(plain.getMsg(), "UNDEF");
    EXPECT_EQ(plain.getFile(), "UNDEF");
    EXPECT_EQ(plain.getLine(), -1);
}

template <typename Caught, typename Thrown>
bool Catches(const Thrown& error)
{
    try
    {
        throw error;
    }
    catch (const Caught&)
    {
        return true;
    }
    catch (...)
    {
        return false;
    }
}

TEST(Errors, AreCaughtByTheirFamilyAndTheRoot)
{
    const MemoryError memory("m", "n", "f", 1);
    EXPECT_TRUE(Catches<MemoryError>(memory));
    EXPECT_TRUE(Catches<BasicError>(memory));
    EXPECT_TRUE(Catches<EBaseException>(memory));
    EXPECT_FALSE(Catches<EStdException>(memory));

    const EOutOfBounds bounds("m", "n", "f", 1UL);
    EXPECT_TRUE(Catches<EOutOfBounds>(bounds));
    EXPECT_TRUE(Catches<EStdException>(bounds));
    EXPECT_TRUE(Catches<EBaseException>(bounds));
    EXPECT_FALSE(Catches<BasicError>(bounds));

    EXPECT_TRUE(Catches<EBaseException>(ENotFound()));
    EXPECT_TRUE(Catches<EBaseException>(EFileAccess(EFileAccess::FILE_EMPTY)));
    EXPECT_FALSE(std::is_polymorphic_v<MemoryError> || std::is_polymorphic_v<EOutOfBounds>);
}

TEST(Errors, CopiesStandAlone)
{
    auto source = std::make_unique<ParameterError>("a method with a long name", "m", "p", "f", 7);
    const ParameterError copied = *source;
    ParameterError assigned("x", "x", "x", "x", 0);
    assigned = *source;
    source.reset();
    const ParameterError& same = assigned;
    assigned = same;
    for (const ParameterError* error : {&copied, &same})
    {
        EXPECT_EQ(error->getMethode(), "a method with a long name");
        EXPECT_EQ(error->getParameter(), "p");
        EXPECT_EQ(error->getLine(), 7);
    }
}

TEST(Errors, FileAccessNamesItsCodes)
{
    const char* const texts[] = {"path not found", "file not found", "file empty", "invalid file format",
                                 "file write protected"};
    for (int code = 0; code < 5; ++code)
    {
        const EFileAccess error(static_cast<EFileAccess::ERROR_CODE>(code));
        EXPECT_EQ(error.getErrorText(), texts[code]);
        EXPECT_EQ(error.getErrorCode(), code);
        EXPECT_EQ(&error.getErrorCode(), &error.getErrorCode()); // the field, not a copy
    }
    for (const int code : {5, -1, -2147483647 - 1, 2147483647})
        EXPECT_EQ(EFileAccess(static_cast<EFileAccess::ERROR_CODE>(code)).getErrorText(), "unknown error");
}
