#include "dbus-proxy/ErrorStatus.h"

#include "ErrorMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <map>
#include <string>

namespace orvo
{

namespace
{

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

std::map<std::int32_t, QString> rowsOfTheDevice()
{
    std::map<std::int32_t, QString> rows;
    std::ifstream file(ERROR_MESSAGES_FILE);
    for (std::string line; std::getline(file, line);)
    {
        const auto tab = line.find('\t');
        rows[std::stoi(line.substr(0, tab))] = QString::fromStdString(line.substr(tab + 1));
    }
    return rows;
}

std::string printed(const ErrorStatus& status)
{
    CaptureStdout();
    status.print();
    return GetCapturedStdout();
}

/// Builds the status of a code without a row and returns what appeared on standard error.
std::string complaintAbout(std::int32_t code, ErrorStatus& status)
{
    CaptureStderr();
    status = ErrorStatus(code);
    return GetCapturedStderr();
}

} // namespace

TEST(ErrorStatus, IsSuccessWithAnEmptyMessageFromTheStart)
{
    const ErrorStatus status;
    EXPECT_EQ(0, status.code);
    EXPECT_EQ(QString(), status.message);
}

TEST(ErrorStatus, HasTheMessageOfEveryRowOfTheTable)
{
    const auto rows = rowsOfTheDevice();
    ASSERT_EQ(83U, rows.size());
    EXPECT_EQ(rows.size(), kErrorMessageCount);
    CaptureStderr();
    for (const auto& [code, message] : rows)
    {
        const ErrorStatus status(code);
        EXPECT_EQ(code, status.code);
        EXPECT_EQ(message.toStdString(), status.message.toStdString()) << "code " << code;
    }
    EXPECT_EQ("", GetCapturedStderr());
}

TEST(ErrorStatus, KnowsNoCodeBesideTheRowsOfTheTable)
{
    const auto rows = rowsOfTheDevice();
    std::size_t known = 0;
    for (std::int32_t code = -1000; code <= 500000; ++code)
    {
        known += findErrorMessage(code) != nullptr ? 1U : 0U;
    }
    EXPECT_EQ(rows.size(), known);
    EXPECT_EQ(nullptr, findErrorMessage(std::numeric_limits<std::int32_t>::min()));
    EXPECT_EQ(nullptr, findErrorMessage(std::numeric_limits<std::int32_t>::max()));
}

TEST(ErrorStatus, KeepsACodeInAGapOfTheTableWithTheFixedText)
{
    ErrorStatus status;
    const std::string complaint = complaintAbout(101064, status);
    EXPECT_THAT(complaint,
                testing::StartsWith("Could not find any error message mapping for 0x18ac8!\n"));
    EXPECT_EQ(101064, status.code);
    EXPECT_EQ("Unknown error for code %d", status.message.toStdString());
}

TEST(ErrorStatus, KeepsANegativeCodeWithTheFixedText)
{
    ErrorStatus status;
    const std::string complaint = complaintAbout(-1, status);
    EXPECT_THAT(complaint,
                testing::StartsWith("Could not find any error message mapping for 0xffffffff!\n"));
    EXPECT_EQ(-1, status.code);
    EXPECT_EQ("Unknown error for code %d", status.message.toStdString());
}

TEST(ErrorStatus, HasNoTextForTheCodesOfTheSupervisorItself)
{
    for (const std::int32_t code : {400004, 400006, 400007})
    {
        ErrorStatus status;
        EXPECT_NE("", complaintAbout(code, status));
        EXPECT_EQ(code, status.code);
        EXPECT_EQ("Unknown error for code %d", status.message.toStdString());
    }
}

TEST(ErrorStatus, ReplacesTheMessageWithTheCode)
{
    ErrorStatus status(101002);
    status.setCode(200009);
    EXPECT_EQ(200009, status.code);
    EXPECT_EQ("WIRL_TIMEOUT_ERROR", status.message.toStdString());
    status.setCode(0);
    EXPECT_EQ(0, status.code);
    EXPECT_EQ("", status.message.toStdString());
}

TEST(ErrorStatus, PrintsItsCodeAndItsMessageInQuotes)
{
    EXPECT_EQ("Error (101002): \"value out of range\"\n", printed(ErrorStatus(101002)));
}

TEST(ErrorStatus, PrintsANegativeCodeToo)
{
    EXPECT_EQ("Error (-7): \"Unknown error for code %d\"\n", printed(ErrorStatus(-7)));
}

TEST(ErrorStatus, PrintsNothingForSuccess)
{
    EXPECT_EQ("", printed(ErrorStatus(0)));
    ErrorStatus withText;
    withText.message = QStringLiteral("nobody reads this");
    EXPECT_EQ("", printed(withText));
}

} // namespace orvo
