#pragma once

#include "platform/AlertPresenter.h"
#include "platform/Authorization.h"
#include "platform/CaptureDevices.h"
#include "platform/CaptureStream.h"
#include "platform/FileSystem.h"
#include "platform/HotKeyService.h"
#include "platform/MediaClock.h"
#include "platform/MovieAsset.h"
#include "platform/Pasteboard.h"
#include "platform/Screens.h"
#include "platform/SerialQueue.h"
#include "platform/ShareableContent.h"
#include "platform/StatusItem.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"

namespace zivra {

/// Everything that the program asks of a desktop, chosen once at start-up. Each service outlives
/// whoever is handed this.
struct Platform {
    UserDefaults &defaults;
    MediaClock &clock;
    Screens &screens;
    ContentQuery &content;
    ScreenCaptureAccess &screenAccess;
    MediaAuthorization &authorization;
    CaptureDeviceCatalog &deviceCatalog;
    CaptureStreamFactory &captureStreams;
    MovieServices &movies;
    SerialQueueFactory &queues;
    FileSystem &files;
    AlertPresenter &alerts;
    Workspace &workspace;
};

/// What only the resident program asks for, with its place in the tray.
struct ResidentPlatform {
    HotKeyService &hotKeys;
    StatusItem &statusItem;
    Pasteboard &pasteboard;
};

} // namespace zivra
