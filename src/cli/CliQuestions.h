#pragma once

#include <QString>

#include "actions/TarnAlert.h"

// Answers the actions' questions for the command-line tool: on a terminal it
// shows the message, the detail and the buttons on stderr and reads the
// choice from stdin; otherwise (or when an answer was given on the command
// line) it answers every question the same way: "no", "yes" or "all" ("Yes
// to All"). Error alerts are printed and acknowledged with "Ok".
class CliQuestions {
  public:
    enum class Policy { Prompt, No, Yes, All };

    // "no", "yes", "all"; false for any other word.
    static bool policyFromWord(const QString& word, Policy* policy);

    // Installs the presenter (and removes it again on destruction).
    explicit CliQuestions(Policy policy);
    ~CliQuestions();
    CliQuestions(const CliQuestions&) = delete;
    CliQuestions& operator=(const CliQuestions&) = delete;

    // The answer the policy gives to a request (the code, or kNoAnswer).
    static int automaticAnswer(Policy policy, const TarnAlert::Request& request);
    // The button that overwrites and deletes nothing ("No", "Cancel",
    // "Skip"; "Ok" for an error): the answer when the input ends.
    static int safeAnswer(const TarnAlert::Request& request);
    // A question is on the terminal (a progress line must not overwrite it).
    static bool isAsking();

  private:
    static int prompt(const TarnAlert::Request& request);
    static int endOfInputAnswer(const TarnAlert::Request& request);
    Policy policy_;
};
