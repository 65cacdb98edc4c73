# Files that qxp generates, as parts of a build: find_package(vc_qxparser) offers these functions.
#
#   qxp_preprocess(TARGET OUTPUT file SOURCES file...
#                  [DEFINES name[=value]...] [UNDEFINES name...] [DIRECTORY dir] [DEPENDS file...] [OPTIONS option...])
#
#   qxp_expand(TARGET OUTPUT file TEMPLATE file XML file
#              [BEGIN text] [END text] [COMPACT] [EVAL script...]
#              [PREPROCESS] [DEFINES name[=value]...] [UNDEFINES name...]
#              [DIRECTORY dir] [DEPENDS file...] [OPTIONS option...])
#
# Each makes OUTPUT whenever TARGET is built and anything has changed that OUTPUT was made from: the inputs, the files
# that they include, DEPENDS, the options, qxp itself. TARGET is a target of the same directory, whose source OUTPUT
# becomes; when there is none of this name, a custom target is made, which a plain build includes.
#
# OUTPUT is named from CMAKE_CURRENT_BINARY_DIR, all other files from CMAKE_CURRENT_SOURCE_DIR. DIRECTORY is where qxp
# looks for includes (its option -C), CMAKE_CURRENT_SOURCE_DIR otherwise; what is below it is known by its name there, in
# diagnostics as in the output. OPTIONS go to qxp as they are.

cmake_policy(VERSION 3.25)

function(qxp_preprocess target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT;DIRECTORY" "SOURCES;DEFINES;UNDEFINES;DEPENDS;OPTIONS")
  _qxp_check_arguments(qxp_preprocess OUTPUT SOURCES)
  set(inputs ${arg_SOURCES})
  _qxp_generate(preprocess)
endfunction()

function(qxp_expand target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "COMPACT;PREPROCESS" "OUTPUT;TEMPLATE;XML;BEGIN;END;DIRECTORY"
    "EVAL;DEFINES;UNDEFINES;DEPENDS;OPTIONS")
  _qxp_check_arguments(qxp_expand OUTPUT TEMPLATE XML)
  set(inputs ${arg_TEMPLATE} ${arg_XML})
  _qxp_generate(expand)
endfunction()

# Checks the parsed arguments of the caller.
function(_qxp_check_arguments function)
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "${function}: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
  endif()
  if(arg_KEYWORDS_MISSING_VALUES)
    message(FATAL_ERROR "${function}: nothing behind: ${arg_KEYWORDS_MISSING_VALUES}")
  endif()
  foreach(keyword IN LISTS ARGN)
    if(NOT arg_${keyword})
      message(FATAL_ERROR "${function}: ${keyword} is missing")
    endif()
  endforeach()
endfunction()

# Appends PREFIX and each of VALUES to the caller's `options`, with semicolons that stay in their value.
function(_qxp_append_options prefix values)
  foreach(value IN LISTS ${values})
    string(REPLACE ";" "\\;" value "${value}")
    list(APPEND options "${prefix}${value}")
  endforeach()
  set(options "${options}" PARENT_SCOPE)
endfunction()

# Makes the caller's OUTPUT from its `inputs` with a command of qxp, and a part of the caller's target.
function(_qxp_generate command)
  cmake_path(ABSOLUTE_PATH arg_OUTPUT BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} NORMALIZE OUTPUT_VARIABLE output)
  if(NOT DEFINED arg_DIRECTORY)
    set(arg_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
  endif()
  cmake_path(ABSOLUTE_PATH arg_DIRECTORY BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE OUTPUT_VARIABLE directory)
  set(options)
  _qxp_append_options(--define= arg_DEFINES)
  _qxp_append_options(--undef= arg_UNDEFINES)
  _qxp_append_options(--eval= arg_EVAL)
  _qxp_append_options("" arg_OPTIONS)
  foreach(flag IN ITEMS COMPACT PREPROCESS)
    if(arg_${flag})
      string(TOLOWER --${flag} option)
      list(APPEND options ${option})
    endif()
  endforeach()
  # Brackets in tags would join the elements of a list, so these two are in none.
  set(begin --quiet)
  set(end --quiet)
  if(DEFINED arg_BEGIN)
    set(begin "--begin=${arg_BEGIN}")
  endif()
  if(DEFINED arg_END)
    set(end "--end=${arg_END}")
  endif()

  set(files)
  set(names)
  foreach(input IN LISTS inputs)
    cmake_path(ABSOLUTE_PATH input BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
    list(APPEND files ${input})
    cmake_path(IS_PREFIX directory ${input} NORMALIZE isBelow)
    if(isBelow)
      cmake_path(RELATIVE_PATH input BASE_DIRECTORY ${directory})
    endif()
    list(APPEND names ${input})
  endforeach()
  set(depends)
  foreach(file IN LISTS arg_DEPENDS)
    if(NOT TARGET ${file})
      cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
    endif()
    list(APPEND depends ${file})
  endforeach()

  cmake_path(GET output PARENT_PATH folder)
  file(MAKE_DIRECTORY ${folder})
  cmake_path(RELATIVE_PATH output BASE_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE shown)
  add_custom_command(OUTPUT ${output}
    COMMAND vc_qxparser::qxp ${command} --dir=${directory} --output=${output} --deps-file=${output}.d
      "${begin}" "${end}" ${options} -- ${names}
    DEPENDS ${files} ${depends} vc_qxparser::qxp
    DEPFILE ${output}.d
    COMMENT "Generating ${shown}"
    VERBATIM)
  _qxp_add_to_target(${output})
endfunction()

# Makes a file a source of the caller's target.
function(_qxp_add_to_target file)
  if(NOT TARGET ${target})
    add_custom_target(${target} ALL)
  endif()
  get_target_property(directory ${target} SOURCE_DIR)
  if(NOT directory STREQUAL CMAKE_CURRENT_SOURCE_DIR)
    message(FATAL_ERROR "${target} is a target of ${directory}: files for it are generated there")
  endif()
  target_sources(${target} PRIVATE ${file})
endfunction()
