#pragma once

// Everything a host needs, in one line.

#include "base/dir.h"
#include "base/file.h"
#include "base/mutex_named.h"
#include "base/option.h"
#include "base/text_encoding.h"
#include "base/thread_critical_section.h"
#include "engine/jsapi.h"
#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_file.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "script/script.h"
#include "script/script_class.h"
#include "script/script_link.h"
#include "script/script_minimal.h"
#include "script/script_values.h"
#include "script/value_conversion.h"
