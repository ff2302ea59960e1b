#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

namespace zelkovanta::platform::linux_host {

class SecretCipher;

/// A Secret Service with one item, on a bus connection of its own, that behaves as a test wants it to.
class FakeSecretService final : public QDBusVirtualObject {
public:
    enum class Behaviour { answers, isSilent, knowsNoEncryption, givesNonsense };

    explicit FakeSecretService(Behaviour behaviour, std::optional<std::string> secret = std::nullopt);
    ~FakeSecretService() override;

    /// A locked item is unlocked by a prompt only.
    bool isLocked = false;
    /// A silent prompt is one that nobody answers until `answerPrompt`.
    bool isPromptSilent = false;
    bool isPromptDismissed = false;
    void answerPrompt(bool isDismissed);
    void vanish();

    std::vector<std::string> calls;

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    void reply(const QDBusMessage& message, const QList<QVariant>& arguments);

    QDBusConnection bus_;
    Behaviour behaviour_;
    std::optional<std::string> secret_;
    std::unique_ptr<SecretCipher> cipher_;
};

}  // namespace zelkovanta::platform::linux_host
