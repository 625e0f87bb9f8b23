// Names of identities, their GUIDs and their stored form.

#include <set>

#include <gtest/gtest.h>

#include "tests/tools/orl_unit/storage_unit.h"
#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/identity_names.h"
#include "tools/orl_unit/identity_value.h"

namespace orl::unit {
namespace {

TEST(IdentityNames, AreOrdinaryTextInUtf8) {
    for (const std::string& name : {std::string("alice"),
                                    std::string("Dr. \xC3\x84nne O'Neil"),
                                    std::string("\xF0\x9F\x91\x8D"),
                                    std::string(128, 'x')}) {
        EXPECT_NO_THROW(checkIdentityName(name)) << name;
    }
}

TEST(IdentityNames, AreNotEmptyTooLongUnprintableOrIllFormed) {
    for (const std::string& name : {std::string(),
                                    std::string(129, 'x'),
                                    std::string("a\nb"),
                                    std::string("a\tb"),
                                    std::string("a\0b", 3),
                                    std::string("a\x7F"),
                                    std::string("\xFF"),
                                    std::string("\xC3")}) {
        EXPECT_THROW(checkIdentityName(name), CommandError) << oneLine(name);
    }
}

TEST(NewIdentity, IsARandomGuidOfVersionFour) {
    std::set<std::string> seen;
    for (int i = 0; i < 100; ++i) {
        const WINBIO_IDENTITY identity = newIdentity();
        EXPECT_EQ(identity.Type, WINBIO_ID_TYPE_GUID);
        EXPECT_EQ(identity.Value.TemplateGuid.Data3 >> 12, 4);
        EXPECT_EQ(identity.Value.TemplateGuid.Data4[0] >> 6, 2);
        seen.insert(identityText(identity));
    }
    EXPECT_EQ(seen.size(), 100U);
}

TEST(IdentityText, WritesAGuidInItsUsualForm) {
    WINBIO_IDENTITY identity = {};
    identity.Type = WINBIO_ID_TYPE_GUID;
    identity.Value.TemplateGuid = {
        0x6D1F3A92, 0x5B7C, 0x4E08, {0x9A, 0x41, 0x2C, 0x7E, 0x5B, 0x90, 0xD3, 0xF6}};
    EXPECT_EQ(identityText(identity), "{6d1f3a92-5b7c-4e08-9a41-2c7e5b90d3f6}");
    EXPECT_EQ(identityText(sidIdentity(1, 4)), "identity of type 3");
}

TEST(IdentityValue, HoldsTheGuidInMemoryOrder) {
    WINBIO_IDENTITY identity = {};
    identity.Type = WINBIO_ID_TYPE_GUID;
    identity.Value.TemplateGuid = {
        0x6D1F3A92, 0x5B7C, 0x4E08, {0x9A, 0x41, 0x2C, 0x7E, 0x5B, 0x90, 0xD3, 0xF6}};
    EXPECT_EQ(identityValue(identity)->bytes,
              (Bytes{0x92,
                     0x3A,
                     0x1F,
                     0x6D,
                     0x7C,
                     0x5B,
                     0x08,
                     0x4E,
                     0x9A,
                     0x41,
                     0x2C,
                     0x7E,
                     0x5B,
                     0x90,
                     0xD3,
                     0xF6}));
}

TEST(IdentityValue, HoldsTheUsedBytesOfASidOnly) {
    EXPECT_EQ(identityValue(sidIdentity(5, 3))->bytes, (Bytes{5, 0, 0}));
    EXPECT_EQ(identityValue(sidIdentity(5, 0)), std::nullopt);
    EXPECT_EQ(identityValue(sidIdentity(5, 69)), std::nullopt);
    EXPECT_EQ(identityValue(wildcardIdentity()), std::nullopt);
}

TEST(IdentityValue, ReadsBack) {
    for (const WINBIO_IDENTITY& identity :
         {guidIdentity(7), sidIdentity(9, 1), sidIdentity(9, 68)}) {
        const IdentityValue value = *identityValue(identity);
        EXPECT_TRUE(sameIdentity(*identityFromValue(value.type, value.bytes), identity));
    }
}

TEST(IdentityValue, WrongFormsFitNoIdentity) {
    EXPECT_EQ(identityFromValue(WINBIO_ID_TYPE_GUID, Bytes(15)).has_value(), false);
    EXPECT_EQ(identityFromValue(WINBIO_ID_TYPE_GUID, Bytes(17)).has_value(), false);
    EXPECT_EQ(identityFromValue(WINBIO_ID_TYPE_SID, Bytes()).has_value(), false);
    EXPECT_EQ(identityFromValue(WINBIO_ID_TYPE_SID, Bytes(69)).has_value(), false);
    EXPECT_EQ(identityFromValue(WINBIO_ID_TYPE_WILDCARD, Bytes(16)).has_value(), false);
}

TEST(SameIdentity, ComparesTypeAndUsedBytes) {
    EXPECT_TRUE(sameIdentity(guidIdentity(1), guidIdentity(1)));
    EXPECT_FALSE(sameIdentity(guidIdentity(1), guidIdentity(2)));
    EXPECT_FALSE(sameIdentity(sidIdentity(1, 4), sidIdentity(1, 5)));
    EXPECT_FALSE(sameIdentity(wildcardIdentity(), wildcardIdentity()));
    WINBIO_IDENTITY restDiffers = sidIdentity(1, 4);
    restDiffers.Value.AccountSid.Data[10] = 99;
    EXPECT_TRUE(sameIdentity(restDiffers, sidIdentity(1, 4)));
}

}  // namespace
}  // namespace orl::unit
