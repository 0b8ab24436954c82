// zivra-upload FILE TOKEN: uploads FILE to the `cloudServer` of the defaults and prints what that took, as
// JSON. Ends with 0 when the server has all of it. The token is none that a real server knows.

#include "cloud/CloudUploader.h"
#include "desktop/media/FFmpegMovieServices.h"
#include "desktop/network/CurlSender.h"
#include "desktop/secrets/KeychainSecretStore.h"
#include "desktop/session/ConsoleAlertPresenter.h"
#include "desktop/session/DesktopWorkspace.h"
#include "desktop/session/JsonUserDefaults.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <chrono>
#include <cstdio>

using namespace zivra;

namespace {

/// Seconds on the clock that is the same in all processes.
double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// A line of /proc/self/status in KiB.
int memory(const QByteArray &name)
{
    QFile status("/proc/self/status");
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith(name)) {
                return line.mid(name.size() + 1).chopped(2).trimmed().toInt();
            }
        }
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("Usage: zivra-upload FILE TOKEN\n", stderr);
        return 2;
    }
    const QUrl file = QUrl::fromLocalFile(QFile::decodeName(argv[1]));
    desktop::JsonUserDefaults defaults(desktop::JsonUserDefaults::standardPath());
    desktop::KeychainSecretStore secrets;
    desktop::DesktopWorkspace workspace;
    desktop::ConsoleAlertPresenter alerts;
    desktop::FFmpegMovieServices movies;
    CloudAccount account({defaults, secrets, workspace, alerts, "demo"});
    account.useManualToken(argv[2]);
    desktop::CurlSender sender;
    CloudUploader uploader(account, file.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash), movies,
                           sender);
    QJsonObject report;
    // The first answer has come, as in a program that has been running for a while.
    QObject::connect(&account, &CloudAccount::userEmailChanged, &application, [&] {
        report["memory"] = memory("VmRSS");
        report["begun"] = now();
        uploader.upload(file, [&](const QString &link) {
            report["link"] = link;
            report["linked"] = now();
        });
        QObject::connect(&uploader, &CloudUploader::changed, &application, [&](const QString &name) {
            if (!uploader.progress().contains(name)) {
                QCoreApplication::quit();
            }
        });
    });
    QCoreApplication::exec();
    const auto remote = uploader.remoteVideo(file);
    report["ended"] = now();
    report["peak"] = memory("VmHWM");
    report["error"] = uploader.errors().value(file.fileName());
    std::puts(QJsonDocument(report).toJson(QJsonDocument::Compact).constData());
    return remote && remote->isReady() ? 0 : 1;
}
