#pragma once

#include "qxp/reference/command_model.h"

#include <string>

/// The manual page, in the macros of man(7).
std::string MakeManPage(const ProgramModel& model, const std::string& version);

std::string MakeBashCompletion(const ProgramModel& model);
std::string MakeZshCompletion(const ProgramModel& model);
std::string MakeFishCompletion(const ProgramModel& model);
