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
    void store(const QByteArray &content) const
    {
        QDir().mkpath(m_folder);
        QFile file(m_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QTemporaryDir m_root;
    QString m_folder = m_root.filePath("deep/io.quillbeck.zivra");
    QString m_path = m_folder + "/defaults.json";
};

TEST_F(UserDefaultsTest, keepsTypedValuesForThisUserAlone)
{
    const QJsonObject values{
        {"flag", false}, {"text", ""}, {"scale", 0.1}, {"data", QJsonObject{{"key", 18}}}};
    {
        JsonUserDefaults defaults(m_path);
        EXPECT_TRUE(defaults.value("flag").isUndefined());
        for (const auto &key : values.keys()) {
            defaults.setValue(key, values[key]);
        }
        defaults.setValue("gone", 1);
        defaults.removeValue("gone");
    }
    const JsonUserDefaults defaults(m_path);
    for (const auto &key : values.keys()) {
        EXPECT_EQ(defaults.value(key), values[key]);
    }
    EXPECT_TRUE(defaults.value("gone").isUndefined());

    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(m_path) & others);
    EXPECT_FALSE(QFile::permissions(m_folder) & others);
}

TEST_F(UserDefaultsTest, setsEachDamagedFileAside)
{
    for (const auto *damage : {R"({"cut": tr)", "[1]", ""}) {
        store(damage);
        JsonUserDefaults defaults(m_path);
        EXPECT_TRUE(defaults.value("cut").isUndefined());
        defaults.setValue("new", 1);
    }
    EXPECT_EQ(QDir(m_folder).entryList({"defaults.json.damaged-*"}).size(), 3);
    EXPECT_EQ(JsonUserDefaults(m_path).value("new"), QJsonValue(1));
}

TEST_F(UserDefaultsTest, transientChangesLeaveTheBaseAlone)
{
    store(R"({"kept": 1, "removed": 1})");
    const JsonUserDefaults base(m_path);
    TransientUserDefaults defaults(base);
    defaults.removeValue("removed");
    EXPECT_EQ(defaults.value("kept"), QJsonValue(1));
    EXPECT_TRUE(defaults.value("removed").isUndefined());
    EXPECT_EQ(base.value("removed"), QJsonValue(1));
    EXPECT_EQ(JsonUserDefaults(m_path).value("removed"), QJsonValue(1));
}

} // namespace

} // namespace zivra::desktop
