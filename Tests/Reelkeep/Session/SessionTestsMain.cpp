#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv); // No widget and no display: the session needs neither.
    testing::InitGoogleTest(&argc, argv);
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    return RUN_ALL_TESTS();
}
