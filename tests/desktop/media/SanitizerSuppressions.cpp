// Read by the sanitizers where one is built in; they look for these very names.
// NOLINTBEGIN(bugprone-reserved-identifier)

/// libx265 keeps some buffers of each encoder for good.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libx265";
}

/// Qt is built without the thread sanitizer, which so does not see what orders the accesses inside of it.
extern "C" const char *__tsan_default_suppressions()
{
    return "race:libQt6Core";
}

// NOLINTEND(bugprone-reserved-identifier)
