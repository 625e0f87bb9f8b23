# Header-only libraries of the tools and tests: orl::cli11 (Debian: libcli11-dev) and orl::json
# (Debian: nlohmann-json3-dev). Shipped code does not use them.
#
# The cross compiler does not look into the system's include folder, and must not: the C library's
# headers there are not its own. So each library's folder alone is linked into the build tree, and
# the targets point there, for every preset alike.
function(orl_header_library target folder probe)
  find_path(ORL_${folder}_PARENT ${folder}/${probe} PATHS /usr/include /usr/local/include
    NO_CMAKE_FIND_ROOT_PATH REQUIRED
    DOC "Folder that holds ${folder}/${probe}")
  set(links ${PROJECT_BINARY_DIR}/header_libraries/${target})
  file(MAKE_DIRECTORY ${links})
  file(CREATE_LINK ${ORL_${folder}_PARENT}/${folder} ${links}/${folder} SYMBOLIC)
  add_library(orl_${target} INTERFACE)
  add_library(orl::${target} ALIAS orl_${target})
  target_include_directories(orl_${target} SYSTEM INTERFACE ${links})
endfunction()

orl_header_library(cli11 CLI CLI.hpp)
orl_header_library(json nlohmann json.hpp)
