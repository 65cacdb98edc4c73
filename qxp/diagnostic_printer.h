#pragma once

#include "qxp/diagnostic.h"

#include <memory>
#include <string>
#include <vector>

struct CommonOptions;

/// A form that diagnostics take on standard error.
class DiagnosticPrinter
{
public:
    virtual ~DiagnosticPrinter() = default;
    virtual void Print(const Diagnostic& diagnostic) = 0;
    /// Called once, when nothing more is to come; with the exit status of the run.
    virtual void Finish(int status);
};

/// The printer of the format that --diagnostics names.
std::unique_ptr<DiagnosticPrinter> MakeDiagnosticPrinter(const CommonOptions& options);

/// What --diagnostics may name, in the order of its help; the first is the form for people, who see progress too.
std::vector<std::string> DiagnosticFormats();

std::unique_ptr<DiagnosticPrinter> MakeTextPrinter(const CommonOptions& options);
std::unique_ptr<DiagnosticPrinter> MakeJsonPrinter(const CommonOptions& options);
std::unique_ptr<DiagnosticPrinter> MakeSarifPrinter(const CommonOptions& options);
