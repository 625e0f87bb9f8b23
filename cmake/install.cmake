# What `cmake --install build/<preset>` leaves, by component:
#   matcher  the matcher's shared library, its header <orl/finger_matcher.h> and the package
#            `orl_finger_matcher` for find_package, with the target orl::finger_matcher
#   module   the engine adapter module
#   tools    orl-finger and orl-unit
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

if(TARGET orl_finger_matcher)
  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orl_finger_matcher)
  install(TARGETS orl_finger_matcher EXPORT orl_finger_matcher COMPONENT matcher
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(FILES ${PROJECT_SOURCE_DIR}/matcher/api/finger_matcher.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orl COMPONENT matcher)
  install(EXPORT orl_finger_matcher NAMESPACE orl:: FILE orl_finger_matcher-config.cmake
    DESTINATION ${package_dir} COMPONENT matcher)
  write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/orl_finger_matcher-config-version.cmake
    COMPATIBILITY SameMajorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/orl_finger_matcher-config-version.cmake
    DESTINATION ${package_dir} COMPONENT matcher)
endif()

if(TARGET orl_engine_adapter)
  install(TARGETS orl_engine_adapter COMPONENT module
    LIBRARY DESTINATION $<IF:$<BOOL:${WIN32}>,${CMAKE_INSTALL_BINDIR},${CMAKE_INSTALL_LIBDIR}>)
endif()

foreach(tool IN ITEMS orl-finger orl-unit)
  if(TARGET ${tool})
    install(TARGETS ${tool} COMPONENT tools RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endforeach()
