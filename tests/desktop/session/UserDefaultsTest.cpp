#include "desktop/session/JsonUserDefaults.h"
#include "desktop/session/TransientUserDefaults.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zivra::desktop {

namespace {

class UserDefaultsTest : public testing::Test {
protected:
    void store(const QByteArray &content)
    {
        QDir().mkpath(m_folder);
        QFile file(m_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    [[nodiscard]] QStringList files() const { return QDir(m_folder).entryList(QDir::Files | QDir::Hidden); }

    QTemporaryDir m_root;
    QString m_folder = m_root.filePath("deep/io.quillbeck.zivra");
    QString m_path = m_folder + "/defaults.json";
};

TEST_F(UserDefaultsTest, keepsTypedValuesForThisUserAlone)
{
    const QJsonValue data = QJsonObject{{"key", 18}, {"modifiers", 768}};
    {
        JsonUserDefaults defaults(m_path);
        EXPECT_TRUE(defaults.value("flag").isUndefined());
        defaults.setValue("flag", false);
        defaults.setValue("text", "");
        defaults.setValue("scale", 0.1);
        defaults.setValue("data", data);
        defaults.setValue("gone", 1);
        defaults.removeValue("gone");
    }
    const JsonUserDefaults defaults(m_path);
    EXPECT_EQ(defaults.value("flag"), QJsonValue(false));
    EXPECT_EQ(defaults.value("text"), QJsonValue(""));
    EXPECT_EQ(defaults.value("scale"), QJsonValue(0.1));
    EXPECT_EQ(defaults.value("data"), data);
    EXPECT_TRUE(defaults.value("gone").isUndefined());

    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther |
                        QFile::WriteOther | QFile::ExeOther;
    EXPECT_FALSE(QFile::permissions(m_path) & others);
    EXPECT_FALSE(QFile::permissions(m_folder) & others);
    EXPECT_EQ(files(), QStringList("defaults.json"));
}

TEST_F(UserDefaultsTest, setsEachDamagedFileAside)
{
    for (const auto *damage : {R"({"cut": tr)", "[1]", ""}) {
        store(damage);
        JsonUserDefaults defaults(m_path);
        EXPECT_TRUE(defaults.value("cut").isUndefined());
        defaults.setValue("new", 1);
    }
    EXPECT_EQ(files().filter("defaults.json.damaged-").size(), 3);
    EXPECT_EQ(JsonUserDefaults(m_path).value("new"), QJsonValue(1));
}

TEST_F(UserDefaultsTest, holdsWhatCannotBeStored)
{
    ASSERT_TRUE(QDir().mkpath(m_root.filePath("deep")));
    QFile file(m_folder); // stands where the folder should be
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    JsonUserDefaults defaults(m_folder + "/defaults.json");
    defaults.setValue("key", "value");
    EXPECT_EQ(defaults.value("key"), QJsonValue("value"));
}

TEST_F(UserDefaultsTest, transientChangesLeaveTheBaseAlone)
{
    store(R"({"kept": 1, "changed": 1, "removed": 1})");
    const JsonUserDefaults base(m_path);
    TransientUserDefaults defaults(base);
    defaults.setValue("changed", 2);
    defaults.removeValue("removed");
    EXPECT_EQ(defaults.value("kept"), QJsonValue(1));
    EXPECT_EQ(defaults.value("changed"), QJsonValue(2));
    EXPECT_TRUE(defaults.value("removed").isUndefined());
    EXPECT_EQ(base.value("changed"), QJsonValue(1));
    EXPECT_EQ(JsonUserDefaults(m_path).value("removed"), QJsonValue(1));
}

} // namespace

} // namespace zivra::desktop
