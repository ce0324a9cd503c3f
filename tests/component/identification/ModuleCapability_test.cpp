#include "Capabilities.h"
#include "I2cTree.h"

#include "identification/EepromLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo
{

using test::EepromImage;
using test::I2cTree;
using test::moduleCapabilities;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
struct ModuleRow
{
    const char* device;
    char letter;
    const char* typeCode;
    std::vector<MFCapability_t> capabilities;
};

void PrintTo(const ModuleRow& row, std::ostream* stream)
{
    *stream << row.letter << ' ' << row.typeCode;
}

std::vector<ModuleRow> modules()
{
    return {{"2-0050", 'A', "300", {0}},    {"2-0050", 'A', "301", {0}},
            {"2-0050", 'A', "302", {}},     {"2-0050", 'A', "303", {0}},
            {"2-0050", 'A', "310", {1}},    {"2-0050", 'A', "311", {1}},
            {"2-0050", 'A', "351", {}},     {"2-0054", 'F', "340", {9}},
            {"2-0054", 'F', "341", {2, 9}}, {"2-0054", 'F', "342", {3, 9}},
            {"2-0054", 'F', "343", {9}},    {"2-0054", 'F', "344", {}},
            {"2-0054", 'F', "350", {9}},    {"2-0054", 'F', "351", {9, 12}},
            {"2-0054", 'F', "352", {}},     {"2-0054", 'F', "200", {10}},
            {"2-0054", 'F', "201", {10}},   {"2-0054", 'F', "202", {}},
            {"2-0054", 'F', "101", {}},     {"2-0053", 'M', "101", {11}},
            {"2-0053", 'M', "161", {11}},   {"2-0053", 'M', "162", {11}},
            {"2-0053", 'M', "163", {}},     {"2-0053", 'M', "341", {}},
            {"2-0052", 'D', "341", {}},     {"2-0055", 'I', "341", {}}};
}
} // namespace

class ModuleOnTheBus : public testing::TestWithParam<ModuleRow>
{
protected:
    I2cTree m_tree;
};

TEST_P(ModuleOnTheBus, HasTheCapabilitiesOfItsTypeCode)
{
    m_tree.fit(GetParam().device, EepromImage(GetParam().letter, GetParam().typeCode));
    EXPECT_EQ(GetParam().capabilities, moduleCapabilities());
}

INSTANTIATE_TEST_SUITE_P(Type, ModuleOnTheBus, testing::ValuesIn(modules()),
                         [](const auto& row)
                         { return std::string(1, row.param.letter) + row.param.typeCode; });

class ModuleCapability : public testing::Test
{
protected:
    I2cTree m_tree;
};

TEST_F(ModuleCapability, IsAbsentFromABusWithoutEeproms)
{
    EXPECT_THAT(moduleCapabilities(), IsEmpty());
}

TEST_F(ModuleCapability, AddsUpOverTheModules)
{
    m_tree.fit("2-0050", EepromImage('A', "310"));
    m_tree.fit("2-0053", EepromImage('M', "162"));
    m_tree.fit("2-0054", EepromImage('F', "351"));
    EXPECT_THAT(moduleCapabilities(), ElementsAre(1, 9, 11, 12));
}

TEST_F(ModuleCapability, OfTheMainBoardDoesNotNeedTheFRecord)
{
    m_tree.fit("2-0054", EepromImage('F', "351").damagedAt(60, 0x10));
    m_tree.fit("2-0053", EepromImage('M', "101"));
    EXPECT_THAT(moduleCapabilities(), ElementsAre(11));
}

TEST_F(ModuleCapability, IsAbsentIfTheRecordIsDamaged)
{
    m_tree.fit("2-0054", EepromImage('F', "341").damagedAt(127, 0x01));
    EXPECT_THAT(moduleCapabilities(), IsEmpty());
}

TEST_F(ModuleCapability, IsAbsentWhicheverByteOfTheRecordIsDamaged)
{
    m_tree.fit("2-0054", EepromImage('F', "341"));
    ASSERT_TRUE(hasCapability(9));
    for (std::size_t offset = 0; offset < kEepromRecordSize; ++offset)
    {
        m_tree.write("2-0054", EepromImage('F', "341").damagedAt(offset, 0x10));
        EXPECT_FALSE(hasCapability(9)) << "byte " << offset;
    }
}

TEST_F(ModuleCapability, IsAbsentIfTheRecordBelongsToAnotherModule)
{
    m_tree.fit("2-0054", EepromImage('M', "341"));
    EXPECT_THAT(moduleCapabilities(), IsEmpty());
}

TEST_F(ModuleCapability, NeedsAKnownVersion)
{
    m_tree.fit("2-0054", EepromImage('F', "341").version("01"));
    EXPECT_THAT(moduleCapabilities(), IsEmpty());
    m_tree.write("2-0054", EepromImage('F', "341").version("03").bytes());
    EXPECT_THAT(moduleCapabilities(), ElementsAre(2, 9));
    m_tree.write("2-0054", EepromImage('F', "341").version("04").bytes());
    EXPECT_THAT(moduleCapabilities(), IsEmpty());
}

TEST_F(ModuleCapability, IsReadAnewAtEveryQuery)
{
    m_tree.fit("2-0054", EepromImage('F', "341"));
    EXPECT_TRUE(hasCapability(9));
    m_tree.write("2-0054", EepromImage('F', "200").bytes());
    EXPECT_FALSE(hasCapability(9));
    EXPECT_TRUE(hasCapability(10));
    m_tree.vanish("2-0054");
    EXPECT_FALSE(hasCapability(10));
    m_tree.fit("2-0054", EepromImage('F', "341"));
    EXPECT_TRUE(hasCapability(9));
}

TEST_F(ModuleCapability, IsPresentIfNoTableDescribesIt)
{
    EXPECT_TRUE(hasCapability(13));
    EXPECT_TRUE(hasCapability(1000));
}

} // namespace orvo
