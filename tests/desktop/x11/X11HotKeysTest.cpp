#include "desktop/x11/X11HotKeys.h"

#include "TestClient.h"
#include "desktop/x11/AppleKeyCodes.h"
#include "support/Eventually.h"

#include <QProcess>

#include <gtest/gtest.h>
#include <xcb/xcb_keysyms.h>

namespace zivra::desktop {
namespace {

using namespace std::chrono_literals;

// HIToolbox/Events.h.
constexpr std::uint32_t kKeyR = 0x0F;
constexpr std::uint32_t kKey5 = 0x17;
constexpr std::uint32_t kCommand = 0x0100;
constexpr std::uint32_t kShift = 0x0200;
constexpr std::uint32_t kOption = 0x0800;
constexpr std::uint32_t kControl = 0x1000;

// Of the R key on the X server.
constexpr xcb_keycode_t kXKeyR = 27;
constexpr std::uint16_t kControlAlt = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;

void xdotool(const QStringList &arguments)
{
    ASSERT_EQ(QProcess::execute("xdotool", arguments), 0);
}

class X11HotKeysTest : public ::testing::Test {
protected:
    X11HotKeysTest()
    {
        hotKeys.setPressHandler([this](std::uint32_t id) { pressed.push_back(id); });
    }
    [[nodiscard]] bool firesOnce(const QString &keys, std::uint32_t id)
    {
        pressed.clear();
        xdotool({"key", keys});
        const bool came = eventually([&] { return !pressed.empty(); });
        return came && !eventually([&] { return pressed != std::vector{id}; }, 30ms);
    }
    [[nodiscard]] bool staysSilent(const QString &keys)
    {
        pressed.clear();
        xdotool({"key", keys});
        return !eventually([&] { return !pressed.empty(); }, 100ms);
    }

    std::vector<std::uint32_t> pressed;
    X11HotKeys hotKeys;
};

TEST_F(X11HotKeysTest, FiresForItsCombinationAloneWhateverTheLocksAre)
{
    ASSERT_TRUE(hotKeys.registerHotKey(kKeyR, kControl | kOption, 7));
    ASSERT_TRUE(hotKeys.registerHotKey(kKey5, kCommand | kShift, 8));
    EXPECT_TRUE(firesOnce("ctrl+alt+r", 7));
    EXPECT_TRUE(firesOnce("super+shift+5", 8));
    EXPECT_TRUE(staysSilent("ctrl+r"));
    EXPECT_TRUE(staysSilent("ctrl+alt+shift+r"));
    for (const char *lock : {"Num_Lock", "Caps_Lock", "Num_Lock", "Caps_Lock"}) { // on, on, off, off
        xdotool({"key", lock});
        EXPECT_TRUE(firesOnce("ctrl+alt+r", 7)) << lock;
    }
}

TEST_F(X11HotKeysTest, FiresOnceForAHeldKey)
{
    ASSERT_TRUE(hotKeys.registerHotKey(kKeyR, kControl | kOption, 7));
    QProcess::execute("xset", {"r", "rate", "100", "50"});
    xdotool({"keydown", "ctrl", "keydown", "alt", "keydown", "r"});
    EXPECT_FALSE(eventually([&] { return pressed.size() > 1; }, 600ms));
    EXPECT_EQ(pressed.size(), 1);
    xdotool({"keyup", "r", "keydown", "r", "keyup", "r", "keyup", "alt", "keyup", "ctrl"});
    EXPECT_TRUE(eventually([&] { return pressed.size() == 2; }));
}

TEST_F(X11HotKeysTest, TakesAllOrNothing)
{
    std::optional<TestClient> other(std::in_place);
    ASSERT_TRUE(other->grabKey(kXKeyR, kControlAlt | XCB_MOD_MASK_2)); // with NumLock
    EXPECT_FALSE(hotKeys.registerHotKey(kKeyR, kControl | kOption, 1));
    EXPECT_TRUE(TestClient().grabKey(kXKeyR, kControlAlt)) << "the other variants were not given back";
    other.reset();

    std::optional<HotKeyService::Reference> reference;
    const auto registers = [&] {
        reference = hotKeys.registerHotKey(kKeyR, kControl | kOption, 1);
        return reference.has_value();
    };
    ASSERT_TRUE(eventually(registers)); // once the server has noticed that the others are gone
    EXPECT_FALSE(hotKeys.registerHotKey(kKeyR, kControl | kOption, 2)) << "taken by ourselves";
    hotKeys.unregisterHotKey(*reference);
    EXPECT_TRUE(TestClient().grabKey(kXKeyR, kControlAlt));
}

TEST_F(X11HotKeysTest, FollowsTheLayout)
{
    ASSERT_TRUE(hotKeys.registerHotKey(kKeyR, kCommand, 5));
    EXPECT_TRUE(firesOnce("super+r", 5));
    for (const auto &[from, to] : {std::pair("Mod4", "Mod3"), std::pair("Mod3", "Mod4")}) {
        QProcess::execute("xmodmap", {"-e", QString("remove %1 = Super_L Super_R Hyper_L").arg(from), "-e",
                                      QString("add %1 = Super_L Super_R").arg(to)});
        const std::uint16_t given = to[3] == '3' ? XCB_MOD_MASK_4 : XCB_MOD_MASK_3;
        EXPECT_TRUE(eventually([&] { return TestClient().grabKey(kXKeyR, given); }));
        EXPECT_TRUE(firesOnce("super+r", 5));
    }
}

TEST_F(X11HotKeysTest, FindsEachPlaceOnAnAmericanKeyboard)
{
    EXPECT_FALSE(hotKeys.registerHotKey(0xFFFF, kControl | kOption, 3)) << "no such key";
    const TestClient client;
    const std::unique_ptr<xcb_key_symbols_t, decltype(&xcb_key_symbols_free)> symbols(
        xcb_key_symbols_alloc(client.get()), xcb_key_symbols_free);
    // What Apple's key codes print, from 0 on; a blank stands for a key that prints nothing here.
    const std::string_view printed = "asdfhgzxcv bqweryt123465=97-80]ou[ip lj'k;\\,/nm.";
    for (std::uint32_t code = 0; code < printed.size(); ++code) {
        const auto symbol = xcb_key_symbols_get_keysym(symbols.get(), xKeyCode(code).value_or(0), 0);
        if (printed[code] != ' ') {
            EXPECT_EQ(symbol, static_cast<xcb_keysym_t>(printed[code])) << code;
        }
    }
}

} // namespace
} // namespace zivra::desktop
