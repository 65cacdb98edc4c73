#pragma once

/// Marks what the shared library exports; everything else has hidden visibility.
#define VC_QXPARSER_API __attribute__((visibility("default")))
