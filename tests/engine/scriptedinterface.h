#pragma once

#include "userinterface.h"

#include <QStringList>

/// A user who answers as told beforehand and keeps what was said.
class ScriptedInterface final : public UserInterface
{
public:
    void log(LogLevel, const QString &text) override { lines.append(text); }
    void showStatus(const QString &text) override { statusTexts.append(text); }
    void beep() override { ++beeps; }
    std::optional<double> askForMemory(double, double) override
    {
        ++memoryQuestions;
        return memoryAnswer;
    }
    bool confirmMultiFile(const QString &) override { return true; }
    bool confirm(const QString &text) override
    {
        questions.append(text);
        return answer;
    }
    bool askToUseDocumentLocale(const QString &, const QString &) override { return true; }
    bool askForMissingInputs(const QStringList &) override { return false; }
    std::optional<QString> clipboardText() override { return clipboard; }
    bool setClipboardText(const QString &text) override
    {
        clipboard = text;
        return true;
    }

    QStringList lines;
    QStringList statusTexts;
    QStringList questions;
    int beeps = 0;
    int memoryQuestions = 0;
    std::optional<double> memoryAnswer;
    bool answer = true;
    std::optional<QString> clipboard;
};
