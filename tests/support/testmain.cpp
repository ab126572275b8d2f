#include "testsupport.h"

#ifdef TW_TEST_WINDOW
#include <QApplication>
#else
#include <QCoreApplication>
#endif
#include <QLocale>
#include <vector>

namespace {

std::vector<TestRegistration::Make> &registrations()
{
    static std::vector<TestRegistration::Make> all;
    return all;
}

} // namespace

TestRegistration::TestRegistration(Make make)
{
    registrations().push_back(std::move(make));
}

// Runs every registered class with the program's arguments ("-txt", "slotName", ...). Locale and
// time zone are fixed, so that results do not depend on the machine.
int main(int argc, char **argv)
{
    qputenv("TZ", "UTC");
#ifdef TW_TEST_WINDOW
    QApplication application(argc, argv);
#else
    QCoreApplication application(argc, argv);
#endif
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    int failures = 0;
    for (const TestRegistration::Make &make : registrations()) {
        const std::unique_ptr<QObject> test = make();
        failures += QTest::qExec(test.get(), argc, argv);
    }
    return failures == 0 ? 0 : 1;
}
