#include "settings/Settings.h"

#include "settings/Duration.h"
#include "support/PrintQt.h"
#include "support/fakes/FakeUserDefaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

/// Every property that is kept, off its default.
const QJsonObject kStored = QJsonDocument::fromJson(R"({
    "mode": "cameraOnly", "captureArea": "customArea", "bubbleSize": "large",
    "quality": 480, "displayID": 4000000000, "countdownSeconds": -1,
    "cameraID": "cam", "micID": "mic", "cameraEnabled": false, "micEnabled": false,
    "systemAudio": true, "countdown": false, "highlightClicks": true, "mirrorCamera": false,
    "showPanelOnLaunch": false, "openLibraryAfterRecording": false})")
                                .object();

/// Every property and shortcut, for comparison.
QString contents(const Settings &settings)
{
    QStringList all;
    const QMetaObject *type = settings.metaObject();
    for (int index = type->propertyOffset(); index < type->propertyCount(); ++index) {
        const QVariant value = type->property(index).read(&settings);
        all << (value.typeId() == QMetaType::QString ? value.toString()
                                                     : QString::number(value.toLongLong()));
    }
    for (const ShortcutAction action : kAllShortcutActions) {
        const auto shortcut = settings.shortcut(action);
        all << (shortcut ? shortcut->display() : QString("none"));
    }
    return all.join('|');
}

struct SettingsTest : testing::Test {
    FakeUserDefaults defaults;
};

} // namespace

TEST_F(SettingsTest, KeepsWhatIsSetUnderItsOwnKey)
{
    for (const QString &key : kStored.keys()) {
        defaults.values = {{key, kStored[key]}};
        const QVariant loaded = Settings(defaults).property(key.toLatin1());
        FakeUserDefaults written;
        Settings settings(written);
        settings.setProperty(key.toLatin1(), loaded);
        settings.setWindowID(5);
        settings.setWindowTitle("Editor");
        EXPECT_TRUE(written.values == defaults.values) << key.toStdString();
    }
}

TEST_F(SettingsTest, StartsAtTheDefaultsAlsoInPlaceOfValuesOfAWrongType)
{
    const QString fresh = "0|0|0|0||||1|1|0|1080|1|0|1|1|3|1|1|⌥⇧L|⌥⇧P|⌥⇧R|⌥⇧C";
    EXPECT_EQ(contents(Settings(defaults)), fresh);
    const auto expectMissing = [&](const QString &key, const QJsonArray &badValues) {
        for (const QJsonValue bad : badValues) {
            defaults.values = {{key, bad}};
            EXPECT_EQ(contents(Settings(defaults)), fresh) << key.toStdString();
        }
    };
    const std::map<QJsonValue::Type, QJsonArray> wrong{{QJsonValue::String, {7, true}},
                                                       {QJsonValue::Double, {"720", 1e300, true}},
                                                       {QJsonValue::Bool, {"false", 0, 1}}};
    for (const QString &key : kStored.keys()) {
        expectMissing(key, {1.5, QJsonValue::Null, QJsonArray{1}, QJsonObject{{"a", 1}}});
        expectMissing(key, wrong.at(kStored[key].type()));
    }
    for (const char *choice : {"mode", "captureArea", "bubbleSize"}) {
        expectMissing(choice, {"", "fullscreen", "Medium"});
    }
    expectMissing("displayID", {-1, 4294967296.0});
    expectMissing("quality", {0, 1081});
    expectMissing("shortcuts",
                  {true, "{}", QJsonArray{}, QJsonObject{{"cancel", QJsonValue::Null}, {"restart", "x"}}});
    EXPECT_TRUE(defaults.written.isEmpty()) << "bad values stay until the property is set";
}

TEST_F(SettingsTest, ForgetsTheWindowOfAnEarlierRun)
{
    defaults.values["captureArea"] = "window";
    EXPECT_EQ(Settings(defaults).captureArea(), CaptureArea::FullScreen);
    EXPECT_EQ(defaults.value("captureArea"), "fullScreen");
}

TEST_F(SettingsTest, TellsBeforeEveryWriteAndAfterEveryChange)
{
    Settings settings(defaults);
    QStringList seen;
    QObject::connect(&settings, &Settings::willChange,
                     [&] { seen << "before " + rawValue(settings.mode()) << defaults.written; });
    QObject::connect(&settings, &Settings::modeChanged,
                     [&] { seen << "after " + rawValue(settings.mode()); });
    settings.setMode(RecordingMode::ScreenOnly);
    settings.setMode(RecordingMode::ScreenOnly);
    EXPECT_EQ(std::exchange(seen, {}),
              QStringList({"before screenAndCamera", "after screenOnly", "before screenOnly", "mode"}));
    settings.setWindowID(1);
    settings.resetShortcuts();
    EXPECT_EQ(seen.filter("before").size(), 2);
    EXPECT_EQ(defaults.written, QStringList({"mode", "mode", "shortcuts"}));
}

TEST_F(SettingsTest, RecordsTheScreenOnlyWithoutACamera)
{
    Settings settings(defaults);
    settings.setCameraEnabled(false);
    EXPECT_EQ(settings.effectiveMode(), RecordingMode::ScreenOnly);
    EXPECT_EQ(settings.mode(), RecordingMode::ScreenAndCamera);
    settings.setMode(RecordingMode::CameraOnly);
    EXPECT_EQ(settings.effectiveMode(), RecordingMode::CameraOnly);
}

TEST_F(SettingsTest, BindsAShortcutToOneActionOnly)
{
    Settings settings(defaults);
    const Shortcut restartDefault = defaultShortcut(ShortcutAction::Restart);
    settings.setShortcut(restartDefault, ShortcutAction::StartStop);
    EXPECT_FALSE(settings.shortcut(ShortcutAction::Restart)) << "cleared, not back on its default";

    settings.setShortcut(restartDefault, ShortcutAction::StartStop);
    settings.setShortcut(std::nullopt, ShortcutAction::Cancel);
    const QJsonObject stored{{"keyCode", 15}, {"modifiers", 2560}, {"key", "R"}};
    EXPECT_EQ(defaults.value("shortcuts"),
              QJsonValue(QJsonObject{
                  {"startStop", stored}, {"restart", QJsonValue::Null}, {"cancel", QJsonValue::Null}}));
    EXPECT_EQ(contents(Settings(defaults)), contents(settings));
    settings.resetShortcuts();
    EXPECT_EQ(contents(settings), contents(Settings(defaults)));
    EXPECT_EQ(settings.shortcut(ShortcutAction::Restart), restartDefault);
}

TEST_F(SettingsTest, LosesAllShortcutsToOneBadEntry)
{
    const auto loads = [this](const QJsonValue &keyCode, const QJsonValue &modifiers, const QJsonValue &key) {
        const QJsonObject restart{{"keyCode", keyCode}, {"modifiers", modifiers}, {"key", key}};
        defaults.values["shortcuts"] = QJsonObject{{"cancel", QJsonValue::Null}, {"restart", restart}};
        return !Settings(defaults).shortcut(ShortcutAction::Cancel);
    };
    EXPECT_TRUE(loads(4294967295.0, 256, "S"));
    EXPECT_FALSE(loads(4294967296.0, 256, "S"));
    EXPECT_FALSE(loads(-1, 256, "S"));
    EXPECT_FALSE(loads(1, 1.5, "S"));
    EXPECT_FALSE(loads(1, 256, 1));
    EXPECT_FALSE(loads(1, 256, QJsonValue::Undefined));
}

TEST(ShortcutTest, IsMadeFromAKeyPress)
{
    const Shortcut all(KeyPress{0, true, true, true, true, "å"});
    EXPECT_EQ(all.display(), "⌃⌥⇧⌘Å");
    EXPECT_EQ(all.modifiers, 0x1b00U);
    EXPECT_EQ(Shortcut(KeyPress{49, false, true, false, false, " "}).display(), "⌥Space");
    EXPECT_EQ(Shortcut(KeyPress{111, false, false, false, false, {}}), Shortcut(111, 0, "F12"));
    EXPECT_EQ(Shortcut::keyName(10, {}), "?");
}

TEST(DurationTest, ReadsLikeAClock)
{
    EXPECT_EQ(formatDuration(-0.1), "0:00");
    EXPECT_EQ(formatDuration(59.9), "0:59");
    EXPECT_EQ(formatDuration(3661), "1:01:01");
}

} // namespace zivra::test
