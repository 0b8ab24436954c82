#include "desktop/x11/capture/ServerFeatures.h"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

namespace zivra::desktop {

namespace {

bool reaches(const auto &reply, std::uint32_t major, std::uint32_t minor)
{
    return reply &&
           (reply->major_version > major || (reply->major_version == major && reply->minor_version >= minor));
}

bool hasInput22(const XcbConnection &x)
{
    const auto version = x.reply(xcb_input_xi_query_version_reply, xcb_input_xi_query_version(x.get(), 2, 2));
    return reaches(version, 2, 2);
}

} // namespace

QString missingServerFeatures(const XcbConnection &x)
{
    struct Feature {
        const char *name;
        xcb_extension_t &extension;
        bool (*isGood)(const XcbConnection &);
    };
    const Feature features[] = {
        {"MIT-SHM", xcb_shm_id,
         [](const XcbConnection &c) {
             return c.reply(xcb_shm_query_version_reply, xcb_shm_query_version(c.get())) != nullptr;
         }},
        {"XFIXES", xcb_xfixes_id,
         [](const XcbConnection &c) {
             return reaches(c.reply(xcb_xfixes_query_version_reply, xcb_xfixes_query_version(c.get(), 5, 0)),
                            5, 0);
         }},
        {"Composite", xcb_composite_id,
         [](const XcbConnection &c) {
             return reaches(
                 c.reply(xcb_composite_query_version_reply, xcb_composite_query_version(c.get(), 0, 4)), 0,
                 3);
         }},
        {"DAMAGE", xcb_damage_id,
         [](const XcbConnection &c) {
             return reaches(c.reply(xcb_damage_query_version_reply, xcb_damage_query_version(c.get(), 1, 1)),
                            1, 1);
         }},
        {"RANDR", xcb_randr_id,
         [](const XcbConnection &c) {
             return reaches(c.reply(xcb_randr_query_version_reply, xcb_randr_query_version(c.get(), 1, 5)), 1,
                            5);
         }},
        {"RENDER", xcb_render_id,
         [](const XcbConnection &c) {
             return reaches(c.reply(xcb_render_query_version_reply, xcb_render_query_version(c.get(), 0, 11)),
                            0, 10);
         }},
        {"XInputExtension", xcb_input_id, hasInput22},
    };
    for (const Feature &feature : features) {
        if (!x.hasExtension(feature.extension) || !feature.isGood(x)) {
            return QStringLiteral(
                       "The X server does not offer the %1 extension in the version that recording needs.")
                .arg(QLatin1String(feature.name));
        }
    }
    const bool isTrueColour = x.screen().root_depth == 24 || x.screen().root_depth == 32;
    return isTrueColour ? QString() : QStringLiteral("The X server's screen has fewer than 24 bits a pixel.");
}

} // namespace zivra::desktop
