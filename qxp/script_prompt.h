#pragma once

class CJScript;
class ScriptLog;

/// Reads, evaluates and prints until the input ends: with line editing and a history on a terminal, plain lines
/// otherwise. A text that is not complete yet is continued on the next line.
void RunPrompt(CJScript& script, ScriptLog& log);
