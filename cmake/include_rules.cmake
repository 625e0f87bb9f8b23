# cmake -DROOT=<source folder> -P include_rules.cmake
#
# Checks which rooms each room includes from, and fails with every include that the table below does
# not allow. Includes of own files are written from the root of the tree.
cmake_minimum_required(VERSION 3.25)

# room | rooms it may include from (itself always)
set(rules
  "matcher/triangulation|"
  "matcher/features|matcher/triangulation"
  "matcher/matching|matcher/features"
  "matcher/api|matcher/matching matcher/features"
  "platform|"
  "adapter|matcher/api platform"
  "tools/command_line|"
  "tools/orl_finger|tools/command_line matcher/api matcher/matching matcher/features matcher/triangulation"
  "tools/orl_unit|tools/command_line platform")

set(broken "")
set(checked 0)
foreach(rule IN LISTS rules)
  string(REGEX REPLACE "[| ]" ";" rule "${rule}")
  list(POP_FRONT rule room)
  set(allowed ${rule} ${room})
  file(GLOB_RECURSE sources ${ROOT}/${room}/*.h ${ROOT}/${room}/*.cpp)
  foreach(source IN LISTS sources)
    file(STRINGS ${source} includes REGEX "^#include \"")
    foreach(include IN LISTS includes)
      math(EXPR checked "${checked} + 1")
      string(REGEX REPLACE "^#include \"(.*)/[^/]*\".*" "\\1" from "${include}")
      set(known FALSE)
      foreach(room_name IN LISTS allowed)
        if(from STREQUAL room_name OR from MATCHES "^${room_name}/")
          set(known TRUE)
        endif()
      endforeach()
      if(NOT known)
        file(RELATIVE_PATH source_name ${ROOT} ${source})
        string(APPEND broken "\n  ${source_name}: ${include}")
      endif()
    endforeach()
  endforeach()
endforeach()

if(broken)
  message(FATAL_ERROR "Includes that the table of rooms does not allow:${broken}")
endif()
if(checked EQUAL 0)
  message(FATAL_ERROR "No include was found below ${ROOT}")
endif()
message(STATUS "${checked} includes follow the table of rooms")
