#include <QCoreApplication>

#include <gtest/gtest.h>

/// libpulse recycles memory among threads in ways that the thread sanitizer cannot see; its locks stay
/// visible. Read by the sanitizer's library, if there is one.
extern "C" const char *__tsan_default_options() // NOLINT(bugprone-reserved-identifier): the library's name
{
    return "ignore_interceptors_accesses=1";
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
