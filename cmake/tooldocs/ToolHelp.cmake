# Reads what a tool's --help lists, in the layout CLI11 prints: sections
# headed "Options:", "Subcommands:" and the like; an option line starts with
# two blanks and its names ("-v,--format"), followed by the type of its value
# in capitals (TEXT, UINT, ENUM:...) when it takes one; a subcommand line
# starts with two blanks and the subcommand's name.
#
# akvo_tool_help(PROGRAM [SUBCOMMAND]) runs PROGRAM [SUBCOMMAND] --help and
# sets, in the caller's scope:
#   AKVO_HELP_TEXT           what --help printed
#   AKVO_HELP_OPTIONS        every option name
#   AKVO_HELP_VALUE_OPTIONS  the names of the options that take a value
#   AKVO_HELP_PATH_OPTIONS   those of them whose value is text, a path as often as not
#   AKVO_HELP_SUBCOMMANDS    the subcommands
function(akvo_tool_help program)
  execute_process(COMMAND ${program} ${ARGN} --help
    OUTPUT_VARIABLE text RESULT_VARIABLE status ERROR_VARIABLE error)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${program} ${ARGN} --help failed (${status}): ${error}")
  endif()
  # Lines become list elements; a semicolon in a description would split one.
  string(REPLACE ";" "," lines "${text}")
  string(REPLACE "\n" ";" lines "${lines}")

  set(section "")
  set(options "")
  set(value_options "")
  set(path_options "")
  set(subcommands "")
  foreach(line IN LISTS lines)
    if(line MATCHES "^([A-Z][A-Za-z ]*):$")
      set(section ${CMAKE_MATCH_1})
    elseif(section STREQUAL "Options" AND line MATCHES "^  (-[^ ]+)(.*)$")
      string(REPLACE "," ";" names "${CMAKE_MATCH_1}")
      list(APPEND options ${names})
      if(CMAKE_MATCH_2 MATCHES "^ ([A-Z][A-Z0-9_]+)")
        list(APPEND value_options ${names})
        if(CMAKE_MATCH_1 MATCHES "^(TEXT|PATH|FILE)$")
          list(APPEND path_options ${names})
        endif()
      endif()
    elseif(section STREQUAL "Subcommands" AND line MATCHES "^  ([a-z][a-z0-9-]*)( |$)")
      list(APPEND subcommands ${CMAKE_MATCH_1})
    endif()
  endforeach()
  if(NOT options)
    message(FATAL_ERROR "${program} ${ARGN} --help lists no option: has its layout changed?")
  endif()

  set(AKVO_HELP_TEXT "${text}" PARENT_SCOPE)
  set(AKVO_HELP_OPTIONS ${options} PARENT_SCOPE)
  set(AKVO_HELP_VALUE_OPTIONS ${value_options} PARENT_SCOPE)
  set(AKVO_HELP_PATH_OPTIONS ${path_options} PARENT_SCOPE)
  set(AKVO_HELP_SUBCOMMANDS ${subcommands} PARENT_SCOPE)
endfunction()
