#include "alerts/beacon_advertiser.h"

#include "platform/simulated/simulated_peripheral_manager.h"

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::alerts {
namespace {

using platform::Advertisement;
using State = platform::PeripheralManagerState;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto roomUUID = "0f7c1a52-6a3e-4d0b-9c43-3a1f5b0e7d11";
const Advertisement roomAdvertisement{.serviceUUIDs = {roomUUID}, .localName = "ZelkoVanta"};

struct BeaconAdvertiserTest : testing::Test {
    platform::simulated::SimulatedRadio radio;
    std::shared_ptr<BeaconAdvertiser> beacon = BeaconAdvertiser::make(radio);
};

TEST_F(BeaconAdvertiserTest, aNewOneIsIdleAndAsksNothingOfTheHost) {
    radio.setState(State::poweredOn);
    EXPECT_EQ(radio.managersMade(), 0U);
    EXPECT_FALSE(beacon->isAdvertising());
}

TEST_F(BeaconAdvertiserTest, stoppingANewOneDoesNothing) {
    beacon->stop();
    beacon->stop();
    EXPECT_EQ(radio.managersMade(), 0U);
    EXPECT_FALSE(beacon->isAdvertising());
}

TEST_F(BeaconAdvertiserTest, armedItAdvertisesTheTwoEntriesOnceTheRadioIsOn) {
    beacon->arm(roomUUID);
    EXPECT_FALSE(beacon->isAdvertising());
    EXPECT_THAT(radio.advertisements(), IsEmpty());
    radio.setState(State::poweredOn);
    EXPECT_TRUE(beacon->isAdvertising());
    EXPECT_THAT(radio.advertisements(), ElementsAre(roomAdvertisement));
}

TEST_F(BeaconAdvertiserTest, armedWithTheRadioOnItAdvertisesAtOnce) {
    radio.setState(State::poweredOn);
    beacon->arm(roomUUID);
    EXPECT_THAT(radio.advertisements(), ElementsAre(roomAdvertisement));
}

TEST_F(BeaconAdvertiserTest, theRadioOnAgainWhileItAdvertisesAddsNothing) {
    beacon->arm(roomUUID);
    radio.setState(State::poweredOn);
    radio.setState(State::poweredOn);
    EXPECT_EQ(radio.starts(), 1U);
    EXPECT_TRUE(beacon->isAdvertising());
}

TEST_F(BeaconAdvertiserTest, whetherItAdvertisesIsTheRadiosToSay) {
    radio.setRefusing(true);
    beacon->arm(roomUUID);
    radio.setState(State::poweredOn);
    EXPECT_TRUE(beacon->isAdvertising()) << "what was asked for";
    EXPECT_THAT(radio.advertisements(), IsEmpty());
    radio.setRefusing(false);
    radio.setState(State::poweredOn);
    EXPECT_EQ(radio.starts(), 2U);
    EXPECT_THAT(radio.advertisements(), ElementsAre(roomAdvertisement));
}

TEST_F(BeaconAdvertiserTest, everyOtherStateEndsItAndTheRadiosReturnResumesIt) {
    beacon->arm(roomUUID);
    std::size_t starts = 0;
    for (const State state :
         {State::poweredOff, State::resetting, State::unauthorized, State::unsupported, State::unknown}) {
        radio.setState(State::poweredOn);
        EXPECT_EQ(radio.starts(), ++starts);
        EXPECT_THAT(radio.advertisements(), ElementsAre(roomAdvertisement));
        radio.setState(state);
        EXPECT_FALSE(beacon->isAdvertising());
        EXPECT_THAT(radio.advertisements(), IsEmpty());
    }
    EXPECT_EQ(radio.managersMade(), 1U);
}

TEST_F(BeaconAdvertiserTest, stoppedItIsAsWhenItWasNew) {
    beacon->arm(roomUUID);
    radio.setState(State::poweredOn);
    EXPECT_EQ(radio.stops(), 0U);
    beacon->stop();
    EXPECT_EQ(radio.stops(), 1U);
    EXPECT_FALSE(beacon->isAdvertising());
    EXPECT_EQ(radio.managerCount(), 0U);
    beacon->stop();
    EXPECT_EQ(radio.stops(), 1U);
    radio.setState(State::poweredOff);
    radio.setState(State::poweredOn);
    EXPECT_THAT(radio.advertisements(), IsEmpty());
    beacon->arm(roomUUID);
    EXPECT_THAT(radio.advertisements(), ElementsAre(roomAdvertisement));
}

TEST_F(BeaconAdvertiserTest, theRadioOnWithoutAServiceStartsNothing) {
    radio.setState(State::poweredOn);
    const auto other = BeaconAdvertiser::make(radio);
    const auto manager = radio.make(other);
    other->peripheralManagerDidUpdateState(*manager);
    EXPECT_EQ(radio.starts(), 0U);
    EXPECT_FALSE(other->isAdvertising());
}

TEST_F(BeaconAdvertiserTest, armedAgainItAdvertisesTheOtherRoomOnly) {
    constexpr auto otherUUID = "9a8b7c6d-0000-4000-8000-00000000abcd";
    radio.setState(State::poweredOn);
    beacon->arm(roomUUID);
    beacon->arm(otherUUID);
    EXPECT_THAT(radio.advertisements(),
                ElementsAre(Advertisement{.serviceUUIDs = {otherUUID}, .localName = "ZelkoVanta"}));
}

TEST_F(BeaconAdvertiserTest, theIdentifierIsWrittenInLowerCase) {
    radio.setState(State::poweredOn);
    beacon->arm("0F7C1A52-6A3E-4D0B-9C43-3A1F5B0E7D11");
    EXPECT_THAT(radio.advertisements(), ElementsAre(roomAdvertisement));
}

TEST_F(BeaconAdvertiserTest, whatIsNoIdentifierLeavesItIdle) {
    radio.setState(State::poweredOn);
    for (const std::string text :
         {"", "Room 3", "0f7c1a52-6a3e-4d0b-9c43-3a1f5b0e7d1", "0f7c1a52-6a3e-4d0b-9c43-3a1f5b0e7d111",
          "0f7c1a526a3e4d0b9c433a1f5b0e7d11", "0f7c1a52-6a3e-4d0b-9c43-3a1f5b0e7d1g",
          "0f7c1a52_6a3e_4d0b_9c43_3a1f5b0e7d11", "0f7c1a5-26a3e-4d0b-9c43-3a1f5b0e7d11",
          "{0f7c1a52-6a3e-4d0b-9c43-3a1f5b0e7d11}", "\xff\xfe"}) {
        beacon->arm(roomUUID);
        beacon->arm(text);
        EXPECT_THAT(radio.advertisements(), IsEmpty()) << text;
        EXPECT_FALSE(beacon->isAdvertising()) << text;
        EXPECT_EQ(radio.managerCount(), 0U) << text;
    }
}

TEST_F(BeaconAdvertiserTest, goneItAdvertisesNoMore) {
    radio.setState(State::poweredOn);
    beacon->arm(roomUUID);
    beacon.reset();
    EXPECT_THAT(radio.advertisements(), IsEmpty());
    radio.setState(State::poweredOn);
}

}  // namespace
}  // namespace zelkovanta::alerts
