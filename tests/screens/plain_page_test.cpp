#include "screens/plain_page.h"

#include "tests/support/office_records.h"

#include <string>

#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

const platform::KeysAsTexts words;

store::StoreState station() {
    store::StoreState state;
    state.isPaired = true;
    state.role = records::DeviceRole::shared;
    state.office = support::makeOffice("office-1");
    state.device = support::makeDevice();
    state.device->name = "Front desk";
    return state;
}

TEST(PlainSignInTest, aWorkstationWithNobodyAsksForASignInInPlaceOfAllElse) {
    store::StoreState state = station();
    state.signInCode = {.image = "image", .expiresAt = "2024-10-04T00:00:50.000Z", .error = "Reconnecting…"};
    const PlainPage page = plainPage(state, words);
    EXPECT_EQ(page.signIn, (PlainSignIn{.isShown = true,
                                        .heading = "Sign in to Front desk",
                                        .hint = "Sign in first. After signing in, choose the current room.",
                                        .image = "image",
                                        .placeholder = "",
                                        .error = "Reconnecting…",
                                        .expiresAt = "2024-10-04T00:00:50.000Z"}));
    EXPECT_FALSE(page.showsReceived || page.showsSent || page.canSend || page.asksForRoom);
}

TEST(PlainSignInTest, aRoomsComputerAsksOnlyWhereTheOfficeWantsToKnowWhoSends) {
    store::StoreState state = station();
    state.role = records::DeviceRole::room;
    state.device = support::makeDeviceOfRoom("room-1");
    state.rooms = {support::makeRoom("room-1")};
    state.rooms[0].name = "Room 1";
    EXPECT_FALSE(plainPage(state, words).signIn.isShown);
    state.office->settings = records::OfficeSettings{
        .autoExpireMinutes = {}, .allowAnyProvider = {}, .ble = {}, .requireSignedInSender = true};
    EXPECT_EQ(plainPage(state, words).signIn.heading, "Sign in to Room 1");
    EXPECT_EQ(plainPage(state, words).signIn.hint, "Scan with the ZelkoVanta app to sign in.");
    state.device->signedInMemberId = "member-1";
    EXPECT_FALSE(plainPage(state, words).signIn.isShown);
}

TEST(PlainSignInTest, aComputerOfAPersonNeverAsks) {
    store::StoreState state = station();
    state.role = records::DeviceRole::member;
    state.device = support::makeDeviceOfMember("member-1");
    EXPECT_FALSE(plainPage(state, words).signIn.isShown);
}

TEST(PlainSignInTest, aCodeTellsWhenItEnds) {
    store::StoreState state = station();
    EXPECT_EQ(plainPage(state, words).signIn.expiresAt, "");
    state.signInCode.expiresAt = "2024-10-04T00:00:50.000Z";
    EXPECT_EQ(plainPage(state, words).signIn.expiresAt, "2024-10-04T00:00:50.000Z");
}

TEST(PlainSignInTest, whatStandsInPlaceOfTheImageTellsWhy) {
    store::StoreState state = station();
    EXPECT_EQ(plainPage(state, words).signIn.placeholder, "Getting a code…");
    state.signInCode.expiresAt = "2024-10-04T00:00:50.000Z";
    EXPECT_EQ(plainPage(state, words).signIn.placeholder, "The code can't be shown.");
    state.signInCode.error = "Reconnecting…";
    EXPECT_EQ(plainPage(state, words).signIn.placeholder, "");
    state.signInCode = {.image = "image", .expiresAt = "2024-10-04T00:00:50.000Z", .error = {}};
    EXPECT_EQ(plainPage(state, words).signIn.placeholder, "");
}

TEST(PlainRoomTest, whoHasToSayWhereTheyAreIsRemindedOfTheRoomBefore) {
    store::StoreState state = station();
    state.members = {support::makeMember("member-1")};
    state.rooms = {support::makeRoom("room-1")};
    state.rooms[0].name = "Room 1";
    EXPECT_EQ(plainPage(state, words, state.rooms.data()).hint, "") << "nobody is here yet";
    state.device->signedInMemberId = "member-1";
    EXPECT_EQ(plainPage(state, words).hint, "Choose a room for this sign-in before sending.");
    EXPECT_EQ(plainPage(state, words, state.rooms.data()).hint,
              "Choose a room for this sign-in before sending. "
              "Last used: Room 1. Choose it or another room for this sign-in.");
    state.flexibleRoomSession = {.signedInMemberId = "member-1", .confirmedRoomId = "room-1"};
    EXPECT_EQ(plainPage(state, words, state.rooms.data()).hint, "");
}

TEST(PlainPageTest, aDepartmentReadsAsInARow) {
    store::StoreState state = station();
    state.role = records::DeviceRole::member;
    state.office->name = "";
    state.office->vertical = "dental";
    state.office->departments = {{{.key = "provider", .label = "The office's own word", .labelPlural = {}},
                                  {.key = "garden", .label = "Gardener", .labelPlural = {}}}};
    state.members = {support::makeMember("me")};
    state.device = support::makeDeviceOfMember("me");
    const auto subtitleFor = [&](const std::string& department) {
        state.members[0].department = department;
        return plainPage(state, words).subtitle;
    };
    EXPECT_EQ(subtitleFor("provider"), "dept-provider-dental");
    EXPECT_EQ(subtitleFor("garden"), "Gardener");
    EXPECT_EQ(subtitleFor("kitchen"), "Kitchen");
    EXPECT_EQ(subtitleFor(""), "");
}

TEST(PlainSetupTest, whatStandsInPlaceOfTheImageTellsWhy) {
    store::StoreState state;
    EXPECT_EQ(plainPage(state, words).setupPlaceholder, "Getting a code…");
    state.setupQrExpiresAt = "2024-10-04T00:04:30.000Z";
    EXPECT_EQ(plainPage(state, words).setupPlaceholder, "The code can't be shown. Type a pairing code instead.");
    state.setupQrError = "Reconnecting…";
    EXPECT_EQ(plainPage(state, words).setupPlaceholder, "");
    state.setupQrError.reset();
    state.setupQrImage = "image";
    EXPECT_EQ(plainPage(state, words).setupPlaceholder, "");
}

TEST(PairingFormTest, followsATryFromTheKeyboardToItsEnd) {
    PairingForm form = withTyped({}, "ab12cd34");
    EXPECT_EQ(form, (PairingForm{.code = "AB12-CD34", .isBusy = false, .error = ""}));
    EXPECT_TRUE(form.mayPair());
    form = whenBegun(form);
    EXPECT_FALSE(form.mayPair());
    form = whenEnded(form, "That is no code.");
    EXPECT_EQ(form, (PairingForm{.code = "AB12-CD34", .isBusy = false, .error = "That is no code."}));
    form = withTyped(form, "ab12cd3");
    EXPECT_EQ(form.error, "That is no code.") << "the reason stays until the next try";
    EXPECT_EQ(whenBegun(form).error, "");
    EXPECT_EQ(whenEnded(whenBegun(form), "").error, "");
    EXPECT_FALSE(withTyped(form, " - ").mayPair());
}

TEST(PairingCode, ofEmojiAndSignsIsEmpty) {
    EXPECT_EQ(pairingCodeText("\U0001F525\U0001F469\u200D\U0001F680 *#-+/\n\t"), "");
    EXPECT_EQ(pairingCodeText("a\U0001F525b\uFE0F1\U0001F3FB2c"), "AB12-C");
}

TEST(PairingCode, isNeverLongerThanItsFormWhateverIsPasted) {
    EXPECT_EQ(pairingCodeText(std::string(100'000, 'x')), "XXXX-XXXX");
    EXPECT_EQ(pairingCodeText("\xff\xfe\x80"), pairingCodeText(pairingCodeText("\xff\xfe\x80")));
}

TEST(PairingCode, takesTheFormInWhichItIsPrinted) {
    EXPECT_EQ(pairingCodeText("ab-12 cd/34ef"), "AB12-CD34");
    EXPECT_EQ(pairingCodeText("ab12"), "AB12");
    EXPECT_EQ(pairingCodeText("ab12c"), "AB12-C");
    EXPECT_EQ(pairingCodeText(""), "");
}

}  // namespace
}  // namespace zelkovanta::screens
