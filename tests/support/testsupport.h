#pragma once

#include <QTest>
#include <functional>
#include <memory>

/// Registers a test class of the program; the shared main runs all registered classes.
class TestRegistration
{
public:
    using Make = std::function<std::unique_ptr<QObject>()>;
    explicit TestRegistration(Make make);
};

#define TW_TEST_CLASS(Class)                                                                       \
    static const TestRegistration registrationOf##Class(                                           \
        [] { return std::unique_ptr<QObject>(new Class); });
