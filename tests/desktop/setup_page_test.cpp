#include "tests/desktop/page_fixture.h"

#include <QBuffer>
#include <QPainter>
#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {
namespace {

std::string dataUrl(const QImage& image) {
    QByteArray file;
    QBuffer buffer(&file);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return "data:image/png;base64," + file.toBase64().toStdString();
}

/// A code of two by two modules with a border: dark at both ends of one diagonal.
std::string codeImage() {
    QImage image(4, 4, QImage::Format_Mono);
    image.fill(1);
    image.setPixel(1, 1, 0);
    image.setPixel(2, 2, 0);
    return dataUrl(image);
}

records::QrTokenResponse setupCode() {
    return {.token = "setup-1",
            .claimToken = "claim-1",
            .qrData = "zelkovanta://setup/setup-1",
            .qrPng = codeImage(),
            .expiresAt = "2026-01-02T08:05:00Z"};
}

class SetupPage : public testing::TestWithParam<Appearance> {
protected:
    Page page{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(BothAppearances, SetupPage, testing::Values(Appearance::light, Appearance::dark));

TEST_P(SetupPage, theCodeStandsOnWhiteInWholePixels) {
    page.computer.launchUnpaired();
    page.open();
    EXPECT_TRUE(page.says("Getting a code"));
    page.computer.answerWith("POST", "/pair/request", setupCode());
    const QImage picture = page.picture();
    const QRect code = page.node(QAccessible::Graphic, "Setup code").rect().translated(-page.window->position());
    // 180 pixels hold a 4-pixel image enlarged 45 times.
    const auto at = [&](int column, int row) {
        return picture.pixelColor(code.topLeft() + QPoint{column * 45 + 22, row * 45 + 22});
    };
    EXPECT_EQ(at(0, 0), QColor(Qt::white));
    EXPECT_EQ(at(3, 3), QColor(Qt::white));
    EXPECT_EQ(at(1, 1), QColor(Qt::black));
    EXPECT_EQ(at(2, 2), QColor(Qt::black));
    EXPECT_EQ(at(2, 1), QColor(Qt::white));
    const auto column = [&](int x) { return picture.pixelColor(code.topLeft() + QPoint{x, 67}); };
    EXPECT_EQ(column(44), QColor(Qt::white)) << "the edge of a module is smeared";
    EXPECT_EQ(column(45), QColor(Qt::black)) << "the edge of a module is smeared";
    // White also around it, whatever the page is.
    EXPECT_EQ(picture.pixelColor(code.topLeft() - QPoint{5, -85}), QColor(Qt::white));
}

TEST_P(SetupPage, anImageThatIsNoneGivesWayToWordsThatHelp) {
    page.computer.launchUnpaired();
    page.open();
    auto code = setupCode();
    code.qrPng = "data:image/png;base64,bm8gaW1hZ2U=";
    page.computer.answerWith("POST", "/pair/request", code);
    page.settle();
    EXPECT_TRUE(page.says("The code can't be shown. Type a pairing code instead."));
    EXPECT_FALSE(page.shows(QAccessible::Graphic, "Setup code"));
    EXPECT_TRUE(page.shows(QAccessible::EditableText, "Pairing code"));
}

TEST_P(SetupPage, aSmallFileThatUnfoldsToAnEnormousPictureIsNotUnfolded) {
    page.computer.launchUnpaired();
    page.open();
    auto code = setupCode();
    code.qrPng = dataUrl([] {
        QImage image(8000, 8000, QImage::Format_Mono);
        image.fill(0);
        return image;
    }());
    ASSERT_LT(code.qrPng.size(), 100'000U);
    page.computer.answerWith("POST", "/pair/request", code);
    page.settle();
    EXPECT_TRUE(page.says("The code can't be shown. Type a pairing code instead."));
    EXPECT_FALSE(page.shows(QAccessible::Graphic, "Setup code"));
}

TEST_P(SetupPage, aUsableCodeAfterOneThatWasNoneIsShown) {
    page.computer.launchUnpaired();
    page.open();
    auto code = setupCode();
    code.qrPng = "data:image/png;base64,bm8gaW1hZ2U=";
    page.computer.answerWith("POST", "/pair/request", code);
    page.computer.loop.advance(std::chrono::seconds{271});
    while (page.computer.openRequest("POST", "/pair/request") == nullptr) {
        page.computer.loop.advance(std::chrono::seconds{1});
    }
    page.computer.answerWith("POST", "/pair/request", setupCode());
    page.settle();
    EXPECT_FALSE(page.says("The code can't be shown."));
    EXPECT_TRUE(page.shows(QAccessible::Graphic, "Setup code"));
}

class SetupPageInLight : public testing::Test {
protected:
    Page page;
};

TEST_F(SetupPageInLight, whatGoesWrongIsSaidAndTheOldCodeStays) {
    page.computer.launchUnpaired();
    page.open();
    page.computer.answerWith("POST", "/pair/request", setupCode());
    page.computer.loop.advance(std::chrono::seconds{271});
    page.settle();
    while (page.computer.openRequest("POST", "/pair/request") == nullptr) {
        page.computer.loop.advance(std::chrono::seconds{1});
    }
    page.computer.fail("POST", "/pair/request", platform::TransportCause::refused);
    page.settle();
    EXPECT_TRUE(page.shows(QAccessible::AlertMessage, "Reconnecting…"));
    EXPECT_TRUE(page.shows(QAccessible::Graphic, "Setup code"));
}

TEST_F(SetupPageInLight, aRevokedComputerSaysWhy) {
    page.computer.launchWith("room", practice());
    page.open();
    EXPECT_TRUE(page.says("Room 3"));
    page.computer.socket().fail({.closeCode = 4001, .httpStatus = {}});
    page.settle();
    EXPECT_TRUE(
        page.shows(QAccessible::AlertMessage, "This computer is no longer linked. Scan the code to set it up again."));
    EXPECT_FALSE(page.says("Room 3"));
}

TEST_F(SetupPageInLight, aTypedCodeTakesItsFormAndIsRedeemed) {
    page.computer.launchUnpaired();
    page.open();
    page.click(page.node(QAccessible::EditableText, "Pairing code"));
    page.type("ab-12 cd/34ef");
    page.key(Qt::Key_Return);
    auto* request = page.computer.openRequest("POST", "/pair/redeem");
    ASSERT_NE(request, nullptr);
    EXPECT_NE(request->request.body->find(R"("AB12-CD34")"), std::string::npos) << *request->request.body;
    EXPECT_TRUE(page.shows(QAccessible::Button, "Pairing…"));
    EXPECT_FALSE(page.node(QAccessible::Button, "Pairing…").isEnabled());

    page.computer.answer("POST", "/pair/redeem", 404, R"({"error":"invalid_code","message":"That is no code."})");
    page.settle();
    EXPECT_TRUE(page.shows(QAccessible::AlertMessage, "That is no code."));
    EXPECT_TRUE(page.shows(QAccessible::Button, "Pair device"));
    EXPECT_EQ(page.node(QAccessible::EditableText, "Pairing code").interface->text(QAccessible::Value), "AB12-CD34");

    page.press("Pair device");
    const auto office = practice();
    page.computer.answerWith("POST", "/pair/redeem",
                             records::PairRedeemResponse{.deviceToken = "token-1",
                                                         .device = office.device,
                                                         .office = office.office,
                                                         .role = records::DeviceRole::room,
                                                         .room = office.rooms[1],
                                                         .member = {}});
    page.settle();
    EXPECT_TRUE(page.says("Room 3"));
    EXPECT_TRUE(page.says("Linden Street Dental"));
    EXPECT_FALSE(page.shows(QAccessible::EditableText, "Pairing code"));
}

TEST_F(SetupPageInLight, aLetterTypedInTheMiddleStaysInTheMiddle) {
    page.computer.launchUnpaired();
    page.open();
    page.click(page.node(QAccessible::EditableText, "Pairing code"));
    page.type("ab12cd");
    for (int count = 0; count < 4; ++count) {
        page.key(Qt::Key_Left);
    }
    page.type("xy");
    const auto text = [&] {
        return page.node(QAccessible::EditableText, "Pairing code").interface->text(QAccessible::Value).toStdString();
    };
    EXPECT_EQ(text(), "AB1X-Y2CD");
    page.type("*\U0001F525");
    EXPECT_EQ(text(), "AB1X-Y2CD") << "what belongs to no code is not taken";
    page.key(Qt::Key_Backspace);
    EXPECT_EQ(text(), "AB1X-2CD");
}

TEST_F(SetupPageInLight, aCodeWithoutAPictureSaysWhatToDo) {
    page.computer.launchUnpaired();
    page.open();
    auto code = setupCode();
    code.qrPng = "data:image/png;base64,***";
    page.computer.answerWith("POST", "/pair/request", code);
    page.settle();
    EXPECT_TRUE(page.says("The code can't be shown. Type a pairing code instead."));
}

TEST_F(SetupPageInLight, anEmptyFieldRedeemsNothing) {
    page.computer.launchUnpaired();
    page.open();
    EXPECT_FALSE(page.node(QAccessible::Button, "Pair device").isEnabled());
    page.click(page.node(QAccessible::EditableText, "Pairing code"));
    page.key(Qt::Key_Return);
    EXPECT_EQ(page.computer.requestCount("POST", "/pair/redeem"), 0U);
}

TEST_F(SetupPageInLight, aKeyStoreThatNeverAnswersLeavesAPageWithoutACode) {
    page.computer.skipDesktopDefaults();
    page.computer.keyStore.memory.setLocked(true);
    page.computer.launch();
    page.open();
    EXPECT_TRUE(page.says("Set up this computer"));
    EXPECT_TRUE(page.says("Getting a code"));
    EXPECT_EQ(page.computer.requestCount("POST", "/pair/request"), 0U);
}

}  // namespace
}  // namespace zelkovanta::desktop_test
