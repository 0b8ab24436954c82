// Read by the sanitizers where one is built in; they look for these very names.
// NOLINTBEGIN(bugprone-reserved-identifier)

/// libx265 keeps some buffers of each encoder for good.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libx265";
}

/// Qt and the encoders are built without the thread sanitizer, which so does not see what orders the accesses
/// inside of them, nor that of an error that a future hands to another thread.
extern "C" const char *__tsan_default_suppressions()
{
    return "race:libQt6Core\nrace:libx264\nrace:libx265\nrace:zivra::PlatformError";
}

// NOLINTEND(bugprone-reserved-identifier)
