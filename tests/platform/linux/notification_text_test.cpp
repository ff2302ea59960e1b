#include "platform/linux/notification_text.h"

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

std::string title(std::string_view text) {
    return notificationTitle(text).toStdString();
}
std::string literal(std::string_view text) {
    return notificationBody(text, BodyReading::literal).toStdString();
}
std::string markup(std::string_view text) {
    return notificationBody(text, BodyReading::markup).toStdString();
}

TEST(NotificationTextTest, plainTextStaysAsItIs) {
    EXPECT_EQ(title("Room 3 · Patient ready"), "Room 3 · Patient ready");
    EXPECT_EQ(literal("Zoë · „Größe“ 👩‍⚕️ שלום"), "Zoë · „Größe“ 👩‍⚕️ שלום");
}

TEST(NotificationTextTest, markupIsEscapedWhereTheDaemonReadsItAndNowhereElse) {
    EXPECT_EQ(markup("<b>5 > 3 & \"x\"</b> &amp;"), "&lt;b&gt;5 &gt; 3 &amp; \"x\"&lt;/b&gt; &amp;amp;");
    EXPECT_EQ(literal("<b>5 > 3 &amp;</b>"), "<b>5 > 3 &amp;</b>");
    EXPECT_EQ(title("<b>Room & 3</b>"), "<b>Room & 3</b>");
}

TEST(NotificationTextTest, controlAndDirectionCharactersAreLeftOut) {
    using namespace std::string_literals;
    EXPECT_EQ(literal("a\0b\x1b[31mc\x7f"s), "ab[31mc");
    EXPECT_EQ(literal("a\u202Eb\u2066c\u200Fd\uFEFFe\u0085f\uFFFEg"), "abcde\nfg");
}

TEST(NotificationTextTest, aTitleIsOneLineAndABodyKeepsItsLines) {
    EXPECT_EQ(title("a\nb\tc\u2028d"), "a b c d");
    EXPECT_EQ(literal("a\nb\tc\u2029d"), "a\nb c\nd");
}

TEST(NotificationTextTest, aTitleIsNeverEmpty) {
    EXPECT_EQ(title(""), "ZelkoVanta");
    EXPECT_EQ(title(" \u202E\n"), "ZelkoVanta");
    EXPECT_EQ(literal(""), "");
}

TEST(NotificationTextTest, bytesThatAreNoCharactersAreReplaced) {
    EXPECT_EQ(literal("a\xffz"), "a\uFFFDz");
    // Half of a pair, as some encoders write it.
    EXPECT_EQ(literal("a\xed\xa0\xbdz"), "a\uFFFD\uFFFD\uFFFDz");
}

TEST(NotificationTextTest, aTextWithoutEndIsCutBetweenCharacters) {
    std::string text;
    while (text.size() < (1U << 20U)) {
        text += "€";
    }
    const QString body = notificationBody(text, BodyReading::literal);
    EXPECT_EQ(body.size(), static_cast<qsizetype>(longestNotificationBody));
    EXPECT_TRUE(body.endsWith(QStringLiteral("€…")));
    EXPECT_EQ(notificationTitle(text).size(), static_cast<qsizetype>(longestNotificationTitle));
    EXPECT_EQ(title(std::string(longestNotificationTitle, 'x')), std::string(longestNotificationTitle, 'x'));
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
