#include "tests/desktop/page_fixture.h"

#include <QBuffer>
#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {
namespace {

using namespace std::chrono_literals;

constexpr const char* path = "/devices/me/signin-qr";

records::QrTokenResponse signInCode() {
    QImage image(4, 4, QImage::Format_Mono);
    image.fill(1);
    QByteArray file;
    QBuffer buffer(&file);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return {.token = "token",
            .claimToken = {},
            .qrData = "zelkovanta://signin",
            .qrPng = "data:image/png;base64," + file.toBase64().toStdString(),
            .expiresAt = "2026-01-02T08:05:00Z"};
}

class SignInPage : public testing::TestWithParam<Appearance> {
protected:
    void openStation() {
        page.computer.launchWith("shared", practice([](records::StateSnapshot& snapshot) {
                                     snapshot.device = support::makeDevice();
                                     snapshot.device.name = "Front desk";
                                 }));
        page.open();
    }
    std::size_t requests() const { return page.computer.requestCount("POST", path); }
    void advance(platform::Duration time) {
        page.computer.loop.advance(time);
        page.settle();
    }

    Page page{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(BothAppearances, SignInPage, testing::Values(Appearance::light, Appearance::dark));

TEST_P(SignInPage, asksForACodeShowsItAndGivesWayToWhoeverSignsIn) {
    openStation();
    EXPECT_TRUE(page.says("Sign in to Front desk"));
    EXPECT_TRUE(page.says("Sign in first. After signing in, choose the current room."));
    EXPECT_TRUE(page.says("Getting a code"));
    EXPECT_FALSE(page.shows(QAccessible::Button, "Send"));
    ASSERT_EQ(requests(), 1U);
    page.computer.answerWith("POST", path, signInCode());
    page.settle();
    EXPECT_TRUE(page.shows(QAccessible::Graphic, "Sign-in code"));
    EXPECT_TRUE(page.says("Code refreshes in 0:50"));

    auto device = support::makeDeviceWithSignIn("dr-amari");
    device.name = "Front desk";
    page.computer.deliverSessionStarted(device, practice().members[0]);
    page.settle();
    EXPECT_TRUE(page.says("Signed in · Dr. Leila Amari"));
    EXPECT_TRUE(page.says("Choose a room for this sign-in before sending."));
    EXPECT_FALSE(page.shows(QAccessible::Graphic, "Sign-in code"));
    EXPECT_EQ(page.computer.state().signInCode, store::SignInCode{});
    advance(5min);
    EXPECT_EQ(requests(), 1U) << "nobody looks at a code any more";
}

TEST_P(SignInPage, aNewCodeComesByItselfAndAFailureIsSaid) {
    openStation();
    page.computer.answerWith("POST", path, signInCode());
    advance(50s);
    ASSERT_EQ(requests(), 2U);
    page.computer.fail("POST", path, platform::TransportCause::refused);
    page.settle();
    EXPECT_TRUE(page.shows(QAccessible::AlertMessage, "Reconnecting…"));
    EXPECT_FALSE(page.says("Code refreshes in"));
    advance(10s);
    page.computer.answerWith("POST", path, signInCode());
    page.settle();
    EXPECT_FALSE(page.says("Reconnecting…"));
    EXPECT_TRUE(page.shows(QAccessible::Graphic, "Sign-in code"));
}

TEST_P(SignInPage, aCodeThatCannotBeDrawnIsSaidAndGivesWayInTimeAsWell) {
    openStation();
    auto code = signInCode();
    code.qrPng = "data:image/png;base64,bm8gaW1hZ2U=";
    page.computer.answerWith("POST", path, code);
    page.settle();
    EXPECT_TRUE(page.says("The code can't be shown."));
    EXPECT_FALSE(page.shows(QAccessible::Graphic, "Sign-in code"));
    EXPECT_TRUE(page.says("Code refreshes in 0:50")) << "the next one may be drawn";
}

TEST_P(SignInPage, codesWithoutAnImageAreSaidToBeSoAndAUsableOneIsShown) {
    openStation();
    auto code = signInCode();
    code.qrPng = "data:image/png;base64,***";
    page.computer.answerWith("POST", path, code);
    page.settle();
    EXPECT_TRUE(page.says("The code can't be shown."));
    advance(50s);
    ASSERT_EQ(requests(), 2U);
    EXPECT_TRUE(page.says("The code can't be shown."));
    EXPECT_FALSE(page.says("Getting a code"));
    page.computer.answerWith("POST", path, signInCode());
    page.settle();
    EXPECT_FALSE(page.says("The code can't be shown."));
    EXPECT_TRUE(page.shows(QAccessible::Graphic, "Sign-in code"));
    EXPECT_TRUE(page.says("Code refreshes in 0:50"));
}

TEST_P(SignInPage, aHiddenWindowAsksForNoCodes) {
    openStation();
    page.computer.answerWith("POST", path, signInCode());
    page.settle();
    page.window->hide();
    page.settle();
    EXPECT_EQ(page.computer.state().signInCode, store::SignInCode{});
    advance(10min);
    EXPECT_EQ(requests(), 1U);
    page.window->show();
    page.settle();
    EXPECT_EQ(requests(), 2U);
}

TEST_P(SignInPage, signingOutBringsTheCodeBack) {
    openStation();
    auto device = support::makeDeviceWithSignIn("dr-amari");
    page.computer.deliverSessionStarted(device, practice().members[0]);
    page.settle();
    page.press("Sign out");
    page.computer.answer("POST", "/devices/me/signout", 200);
    page.settle();
    EXPECT_TRUE(page.says("Sign in to"));
    EXPECT_EQ(requests(), 2U);
}

TEST_P(SignInPage, aRevokedComputerLeavesTheCodeForTheSetup) {
    openStation();
    page.computer.socket().fail({.closeCode = 4001, .httpStatus = {}});
    page.settle();
    EXPECT_TRUE(page.says("This computer is no longer linked. Scan the code to set it up again."));
    EXPECT_FALSE(page.says("Sign in to"));
    EXPECT_EQ(page.computer.state().signInCode, store::SignInCode{});
}

}  // namespace
}  // namespace zelkovanta::desktop_test
