#pragma once

#include <QString>

#include <exception>

// What the program does with an error that nothing handled: a warning alert
// with the error's name as its text and its reason as the informative text
// ("UncaughtException" when it is not a C++ exception), shown modally on the
// GUI thread; then the program ends.
class UncaughtErrorHandler {
  public:
    // Installs the handler for errors that escape every thread (std::terminate).
    static void install();
    // The alert's two texts for the exception being handled (an empty name
    // for one that is not a std::exception).
    static void describe(std::exception_ptr error, QString* name, QString* reason);
    // Shows the alert and waits for it; from another thread the alert is
    // shown on the GUI thread while this one waits.
    static void showAlert(const QString& name, const QString& reason);
};
