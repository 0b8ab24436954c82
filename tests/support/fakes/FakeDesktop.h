#pragma once

#include "platform/AlertPresenter.h"
#include "platform/MediaClock.h"
#include "platform/Screens.h"
#include "platform/ShareableContent.h"
#include "platform/Workspace.h"
#include "support/fakes/ScriptedResult.h"

#include <vector>

namespace zivra::test {

class FakeClock final : public MediaClock {
public:
    MediaTime time = MediaTime::fromMilliseconds(1'000'000);

    [[nodiscard]] MediaTime now() const override { return time; }
    void advance(std::int64_t milliseconds) { time = time + MediaTime::fromMilliseconds(milliseconds); }
};

class FakeScreens final : public Screens {
public:
    std::vector<Screen> all = {{1, QStringLiteral("Main"), QRectF(0, 0, 1920, 1080), 1}};

    [[nodiscard]] std::vector<Screen> screens() const override { return all; }
    [[nodiscard]] QPointF mouseLocation() const override { return {100, 100}; }
};

class FakeContentQuery final : public ContentQuery {
public:
    ShareableContent content;

    QFuture<ShareableContent> shareableContent(bool, bool) override
    {
        return QtFuture::makeReadyFuture(content);
    }
    void activateApplication(std::int64_t) override {}
};

class FakeAlerts final : public AlertPresenter {
public:
    std::vector<Alert> shown;
    AlertAnswer answer; ///< to every alert
    ScriptedResult<AlertAnswer> answering;

    QFuture<AlertAnswer> run(const Alert &alert) override
    {
        shown.push_back(alert);
        return answering.answer(answer);
    }
};

class FakeWorkspace final : public Workspace {
public:
    std::vector<QString> settingsPanes;
    QList<QUrl> opened;

    void open(const QUrl &url) override { opened << url; }
    void openPrivacySettings(const QString &pane) override { settingsPanes.push_back(pane); }
};

} // namespace zivra::test
