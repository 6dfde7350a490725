# Writes the bash completion of a program with subcommands from what its
# --help and each subcommand's --help list, so that the completion offers
# exactly the options and subcommands of the build it comes with.
#   cmake -DPROGRAM=... -DTEMPLATE=....bash.in -DOUTPUT=... -P Completion.cmake
include(${CMAKE_CURRENT_LIST_DIR}/ToolHelp.cmake)

akvo_tool_help(${PROGRAM})
if(NOT AKVO_HELP_SUBCOMMANDS)
  message(FATAL_ERROR "${PROGRAM} --help lists no subcommand: has its layout changed?")
endif()
set(subcommands ${AKVO_HELP_SUBCOMMANDS})
set(global_options ${AKVO_HELP_OPTIONS})
set(value_options ${AKVO_HELP_VALUE_OPTIONS})
set(path_options ${AKVO_HELP_PATH_OPTIONS})
set(subcommand_options "")
foreach(subcommand IN LISTS subcommands)
  akvo_tool_help(${PROGRAM} ${subcommand})
  list(APPEND value_options ${AKVO_HELP_VALUE_OPTIONS})
  list(APPEND path_options ${AKVO_HELP_PATH_OPTIONS})
  list(JOIN AKVO_HELP_OPTIONS " " options)
  list(APPEND subcommand_options "[${subcommand}]=\"${options}\"")
endforeach()
list(REMOVE_DUPLICATES value_options)
list(REMOVE_DUPLICATES path_options)

foreach(list subcommands global_options value_options path_options subcommand_options)
  list(JOIN ${list} " " AKVO_${list})
endforeach()
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
