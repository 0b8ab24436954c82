#include "settings/Settings.h"

#include "settings/Duration.h"
#include "support/PrintQt.h"
#include "support/fakes/FakeUserDefaults.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QMetaProperty>

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

const QStringList kStrings{"cameraID", "micID"};
const QStringList kChoices{"mode", "captureArea", "bubbleSize"};
const QStringList kNumbers{"displayID", "quality", "countdownSeconds"};
const QStringList kBooleans{
    "cameraEnabled",   "micEnabled",   "systemAudio",       "countdown",
    "highlightClicks", "mirrorCamera", "showPanelOnLaunch", "openLibraryAfterRecording"};

/// Every property and shortcut, for comparison.
QStringList contents(const Settings &settings)
{
    QStringList all;
    const QMetaObject *type = settings.metaObject();
    for (int index = type->propertyOffset(); index < type->propertyCount(); ++index) {
        const QVariant value = type->property(index).read(&settings);
        const bool isChoice = value.metaType().flags().testFlag(QMetaType::IsEnumeration);
        all << QString("%1=%2").arg(type->property(index).name(),
                                    isChoice ? QString::number(value.toInt()) : value.toString());
    }
    for (const ShortcutAction action : kAllShortcutActions) {
        const auto shortcut = settings.shortcut(action);
        all << rawValue(action) + '=' + (shortcut ? shortcut->display() : QString("none"));
    }
    return all;
}

struct SettingsTest : testing::Test {
    FakeUserDefaults defaults;
};

} // namespace

TEST_F(SettingsTest, StartsAtTheDefaultsAndWritesNothing)
{
    const Settings settings(defaults);
    EXPECT_EQ(contents(settings), QStringList({"mode=0",
                                               "captureArea=0",
                                               "displayID=0",
                                               "windowID=0",
                                               "windowTitle=",
                                               "cameraID=",
                                               "micID=",
                                               "cameraEnabled=true",
                                               "micEnabled=true",
                                               "systemAudio=false",
                                               "quality=1080",
                                               "countdown=true",
                                               "highlightClicks=false",
                                               "mirrorCamera=true",
                                               "bubbleSize=1",
                                               "countdownSeconds=3",
                                               "showPanelOnLaunch=true",
                                               "openLibraryAfterRecording=true",
                                               "startStop=⌥⇧L",
                                               "pauseResume=⌥⇧P",
                                               "restart=⌥⇧R",
                                               "cancel=⌥⇧C"}));
    EXPECT_TRUE(defaults.written.isEmpty());
}

TEST_F(SettingsTest, KeepsWhatIsSetUnderItsOwnKey)
{
    Settings settings(defaults);
    settings.setMode(RecordingMode::CameraOnly);
    settings.setCaptureArea(CaptureArea::CustomArea);
    settings.setDisplayID(4'000'000'000);
    settings.setWindowID(5);
    settings.setWindowTitle("Editor");
    settings.setCameraID("cam");
    settings.setMicID("mic");
    settings.setQuality(VideoQuality::Low);
    settings.setBubbleSize(BubbleSize::Large);
    settings.setCountdownSeconds(-1);
    for (const QString &key : kBooleans) {
        ASSERT_TRUE(settings.setProperty(key.toLatin1(), !settings.property(key.toLatin1()).toBool()));
        EXPECT_EQ(defaults.value(key), settings.property(key.toLatin1()).toBool()) << key.toStdString();
    }
    EXPECT_EQ(defaults.value("mode"), "cameraOnly");
    EXPECT_EQ(defaults.value("captureArea"), "customArea");
    EXPECT_EQ(defaults.value("displayID"), 4e9);
    EXPECT_EQ(defaults.value("quality"), 480);
    EXPECT_EQ(defaults.value("bubbleSize"), "large");
    EXPECT_EQ(defaults.values.size(),
              std::size_t(kStrings.size() + kChoices.size() + kNumbers.size() + kBooleans.size()));

    const Settings reloaded(defaults);
    settings.setWindowID(0);
    settings.setWindowTitle({});
    EXPECT_EQ(contents(reloaded), contents(settings));
}

TEST_F(SettingsTest, TakesValuesOfAWrongTypeForMissing)
{
    const QJsonArray text{7, 1.5, true, QJsonValue::Null, QJsonArray{1}, QJsonObject{{"a", 1}}};
    QJsonArray choices = text;
    for (const char *unknown : {"", "fullscreen", "Medium"}) {
        choices << unknown;
    }
    const QJsonArray number{"720", 1.5, 1e300, true, QJsonValue::Null, QJsonArray{1}, QJsonObject{{"a", 1}}};
    const QJsonArray boolean{"false", 0, 1, 1.5, QJsonValue::Null, QJsonArray{false}, QJsonObject{}};
    const std::vector<std::pair<QStringList, QJsonArray>> table{
        {kStrings, text},
        {kChoices, choices},
        {kNumbers, number},
        {kBooleans, boolean},
        {{"displayID"}, {-1, 4294967296.0}},
        {{"quality"}, {0, 1081}},
        {{"shortcuts"}, {true, "{}", 1, QJsonArray{}}}};
    const QStringList fresh = contents(Settings(defaults));
    for (const auto &[keys, badValues] : table) {
        for (const QString &key : keys) {
            for (const QJsonValue bad : badValues) {
                defaults.values = {{key, bad}};
                EXPECT_EQ(contents(Settings(defaults)), fresh) << key.toStdString();
            }
        }
    }
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
    const auto note = [&](const QString &when) {
        seen << when + ' ' + rawValue(settings.mode()) + ' ' + defaults.value("mode").toString();
    };
    QObject::connect(&settings, &Settings::willChange, [&] { note("before"); });
    QObject::connect(&settings, &Settings::modeChanged, [&] { note("after"); });
    settings.setMode(RecordingMode::ScreenOnly);
    settings.setMode(RecordingMode::ScreenOnly);
    settings.setWindowID(1);
    settings.resetShortcuts();
    EXPECT_EQ(seen, QStringList({"before screenAndCamera ", "after screenOnly screenOnly",
                                 "before screenOnly screenOnly", "before screenOnly screenOnly",
                                 "before screenOnly screenOnly"}));
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
    EXPECT_EQ(settings.shortcut(ShortcutAction::StartStop), restartDefault);
    EXPECT_FALSE(settings.shortcut(ShortcutAction::Restart)) << "cleared, not back on its default";

    settings.setShortcut(restartDefault, ShortcutAction::StartStop);
    settings.setShortcut(std::nullopt, ShortcutAction::Cancel);
    EXPECT_EQ(
        defaults.value("shortcuts"),
        QJsonValue(QJsonObject{{"startStop", QJsonObject{{"keyCode", 15}, {"modifiers", 2560}, {"key", "R"}}},
                               {"restart", QJsonValue::Null},
                               {"cancel", QJsonValue::Null}}));
    EXPECT_EQ(contents(Settings(defaults)), contents(settings));

    settings.resetShortcuts();
    EXPECT_EQ(contents(settings), contents(Settings(defaults)));
    EXPECT_EQ(settings.shortcut(ShortcutAction::Restart), restartDefault);
}

TEST_F(SettingsTest, LosesAllShortcutsToOneBadEntry)
{
    const QJsonObject good{{"keyCode", 1}, {"modifiers", 256}, {"key", "S"}};
    const auto changed = [&good](const char *member, const QJsonValue &value) {
        QJsonObject entry = good;
        entry[QLatin1String(member)] = value;
        return entry;
    };
    QJsonObject withoutKey = good;
    withoutKey.remove("key");
    const auto loads = [this](const QJsonValue &second) {
        defaults.values["shortcuts"] = QJsonObject{{"cancel", QJsonValue::Null}, {"restart", second}};
        return !Settings(defaults).shortcut(ShortcutAction::Cancel);
    };
    EXPECT_TRUE(loads(good));
    EXPECT_TRUE(loads(changed("keyCode", 4294967295.0)));
    for (const QJsonValue &bad :
         {QJsonValue("x"), QJsonValue(withoutKey), QJsonValue(changed("keyCode", -1)),
          QJsonValue(changed("keyCode", 4294967296.0)), QJsonValue(changed("modifiers", 1.5)),
          QJsonValue(changed("modifiers", "1")), QJsonValue(changed("key", 1)), QJsonValue(QJsonObject()),
          QJsonValue(false)}) {
        EXPECT_FALSE(loads(bad));
    }
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
    const std::vector<std::pair<double, QString>> table{
        {-0.1, "0:00"},  {0, "0:00"},       {59.9, "0:59"},    {61, "1:01"},
        {3599, "59:59"}, {3600, "1:00:00"}, {3661, "1:01:01"}, {360000, "100:00:00"}};
    for (const auto &[seconds, text] : table) {
        EXPECT_EQ(formatDuration(seconds), text);
    }
}

} // namespace zivra::test
