// Zones, rates and destinations as two consoles see them: positions move when
// a row before them goes, so a rate or destination is named by its identity
// and every version is one no other record of its kind ever had. A request
// for a moved or deleted record never reaches another one.

#include <gtest/gtest.h>

#include <set>

#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

class LcrIdentityTest : public SeededStore {
protected:
    std::vector<int> StartHours() {
        std::vector<int> hours;
        for (const auto& rate : store->ListRates("Europe")) hours.push_back(rate.start_hour());
        return hours;
    }
};

TEST_F(LcrIdentityTest, ASaveAfterAnEarlierRowWentLandsOnItsOwnRate) {
    // Console A opens rate 3 (start 18); console B deletes rate 2.
    pb::Rate mine = store->GetRate("Europe", 3);
    ASSERT_EQ(mine.start_hour(), 18);
    ASSERT_NE(mine.id(), 0);
    store->DeleteRate("Europe", 2, store->GetRate("Europe", 2).version());
    ASSERT_EQ(StartHours(), (std::vector<int>{6, 18}));

    // A saves: its own rate changes, now at index 2; nothing else does.
    mine.set_start_hour(19);
    int index = 0;
    store->CommitRate(mine, &index);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(StartHours(), (std::vector<int>{6, 19}));
    EXPECT_EQ(store->ListRates("Europe")[1].index(), 2);

    // Sent again with the version it had, it is a conflict.
    EXPECT_REFUSED(store->CommitRate(mine), pb::ERROR_VERSION_CONFLICT);
}

TEST_F(LcrIdentityTest, ARequestForAGoneRowOrByAStaleIndexIsAConflict) {
    const pb::Rate second = store->GetRate("Europe", 2);
    const pb::Rate third = store->GetRate("Europe", 3);
    store->DeleteRate("Europe", 2, second.version(), second.id());

    // The deleted rate, by its identity: neither saved nor deleted again.
    pb::Rate gone = second;
    gone.set_start_hour(7);
    EXPECT_REFUSED(store->CommitRate(gone), pb::ERROR_VERSION_CONFLICT);
    EXPECT_REFUSED(store->DeleteRate("Europe", 2, second.version(), second.id()),
                   pb::ERROR_VERSION_CONFLICT);
    // By index alone (an older console), the version of what it showed at
    // index 2 belongs to no record there now.
    gone.clear_id();
    EXPECT_REFUSED(store->CommitRate(gone), pb::ERROR_VERSION_CONFLICT);
    EXPECT_REFUSED(store->DeleteRate("Europe", 2, second.version()), pb::ERROR_VERSION_CONFLICT);
    // A rate of another zone is not found through this one.
    store->CommitRate(store->GetRate("Overseas", 0));
    const pb::Rate abroad = store->GetRate("Overseas", 1);
    EXPECT_REFUSED(store->DeleteRate("Europe", 1, abroad.version(), abroad.id()),
                   pb::ERROR_VERSION_CONFLICT);
    EXPECT_EQ(StartHours(), (std::vector<int>{6, 18}));

    // Deleting by identity and version takes exactly that rate.
    store->DeleteRate("Europe", 2, third.version(), third.id());
    EXPECT_EQ(StartHours(), (std::vector<int>{6}));
}

TEST_F(LcrIdentityTest, DestinationsKeepTheirIdentityAndCompareWithOthersOnly) {
    pb::Destination france = store->GetDestination("Europe", 2);
    ASSERT_EQ(france.prefix(), "0033");
    store->DeleteDestination("Europe", 1, store->GetDestination("Europe", 1).version());
    // France is now first; its own prefix is no clash with itself.
    france.set_name("France, all numbers");
    int index = 0;
    store->CommitDestination(france, &index);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(store->GetDestination("Europe", 1).name(), "France, all numbers");
    EXPECT_REFUSED(store->DeleteDestination("Europe", 1, france.version(), france.id()),
                   pb::ERROR_VERSION_CONFLICT);

    // Another's prefix is fine for another type, refused for the same type.
    const auto sms = With(store->GetDestination("Europe", 0),
                          "prefix: '0033' name: 'France SMS' type: DEST_SMS");
    store->CommitDestination(sms);
    EXPECT_REFUSED(store->CommitDestination(With(sms, "name: 'France again' type: DEST_FAX")),
                   pb::ERROR_ALREADY_EXISTS);
}

TEST_F(LcrIdentityTest, VersionsAreNeverSharedOrReused) {
    std::set<int64_t> seen;
    const auto note = [&](int64_t version) { EXPECT_TRUE(seen.insert(version).second) << version; };
    const pb::ZoneList zones = store->ListZones();
    for (const auto& zone : zones.zones()) note(zone.version());
    for (const auto& rate : store->ListRates("Europe")) note(rate.version());
    for (const auto& destination : store->ListDestinations("Europe")) note(destination.version());
    // The last rate goes and a new one comes: it does not get the version
    // of the one that went.
    const pb::Rate last = store->GetRate("Europe", 3);
    store->DeleteRate("Europe", 3, last.version(), last.id());
    int index = 0;
    note(store->CommitRate(store->GetRate("Europe", 0), &index));
    EXPECT_EQ(index, 3) << "a new rate is appended";

    // A zone deleted and created again under its name is another zone: a
    // delete with the version loaded before is refused.
    const pb::Zone overseas = store->GetZone("Overseas");
    store->DeleteZone("Overseas", overseas.version());
    note(store->CommitZone(With(store->GetZone("Overseas"), "is_local: true")));
    EXPECT_REFUSED(store->DeleteZone("Overseas", overseas.version()), pb::ERROR_VERSION_CONFLICT);
    EXPECT_FALSE(store->GetZone("Overseas").is_new());
}

}  // namespace
}  // namespace veldrano::server::testing
