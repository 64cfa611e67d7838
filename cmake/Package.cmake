# What `cmake --install` puts below its prefix. Nothing in it names a place: the whole may be moved, and is found
# by find_package(kelmara) and pkg-config wherever it stands. Components: runtime, development, suite, docs.
include(CMakePackageConfigHelpers)

# Plain `lib` on every prefix. Debian's own default would put these 32-bit libraries below /usr into the folder of
# the compiler's 64-bit kin, decided when the tree is configured, although the prefix is only known when it is
# installed. Both widths of compiler and loader look into `lib`. A packager's -DCMAKE_INSTALL_LIBDIR holds.
set(CMAKE_INSTALL_LIBDIR lib CACHE STRING "Libraries, below the prefix")
include(GNUInstallDirs)
foreach(folder BINDIR LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
    message(FATAL_ERROR "CMAKE_INSTALL_${folder} is ${CMAKE_INSTALL_${folder}}, but has to be a folder below the prefix, "
      "as \"lib32\": the package finds its parts from one another, wherever it is moved to.")
  endif()
endforeach()
set(KELMARA_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/kelmara") # <platform/...> is no name for everybody's folder
set(KELMARA_SUITEDIR "${CMAKE_INSTALL_LIBDIR}/kelmara/suite")
set(KELMARA_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/kelmara")

# docs/versioning.md says what moves these: before 1.0 every minor version may break programs.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(abi_version "0.${PROJECT_VERSION_MINOR}")
  set(compatibility SameMinorVersion)
else()
  set(abi_version ${PROJECT_VERSION_MAJOR})
  set(compatibility SameMajorVersion)
endif()
set_target_properties(kelmara kelmara_platform PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${abi_version})

# What whoever compiles against the installed headers needs. They show no type whose size depends on
# _FILE_OFFSET_BITS or _TIME_BITS; some of what callers compile into themselves is written with SSE2.
set_target_properties(kelmara_platform PROPERTIES EXPORT_NAME platform)
target_include_directories(kelmara_platform INTERFACE "$<INSTALL_INTERFACE:${KELMARA_INCLUDEDIR}>")
target_compile_options(kelmara_platform INTERFACE "$<INSTALL_INTERFACE:-m32;-msse2>")
target_link_options(kelmara_platform INTERFACE "$<INSTALL_INTERFACE:-m32>")
target_compile_features(kelmara_platform INTERFACE cxx_std_20)

# Each finds the libraries from where it stands itself, and what the suite's installer copies to a machine, in the
# links that the installer puts beside it.
file(RELATIVE_PATH from_bin "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
file(RELATIVE_PATH from_suite "/${KELMARA_SUITEDIR}" "/${CMAKE_INSTALL_LIBDIR}")
string(REGEX REPLACE "/$" "" from_suite "${from_suite}")
set_target_properties(kelmara kelmara_platform PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(kelmara_command install_suite PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin}")
get_target_property(suite_targets suite_modules MANUALLY_ADDED_DEPENDENCIES)
set_target_properties(${suite_targets} PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/${from_suite}")
file(RELATIVE_PATH suite_from_bin "/${CMAKE_INSTALL_BINDIR}" "/${KELMARA_SUITEDIR}")
target_compile_definitions(install_suite PRIVATE INSTALLED_SUITE="${suite_from_bin}")

install(TARGETS kelmara kelmara_platform EXPORT kelmara-targets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS kelmara_command RUNTIME COMPONENT runtime)
install(DIRECTORY "${CMAKE_BINARY_DIR}/share/man/man1/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
  COMPONENT runtime OPTIONAL)
install(DIRECTORY "${CMAKE_BINARY_DIR}/share/bash-completion/completions/"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT runtime OPTIONAL)

install(CODE "set(headers_from \"${CMAKE_SOURCE_DIR}\")
  set(headers_to \"\${CMAKE_INSTALL_PREFIX}/${KELMARA_INCLUDEDIR}\")
  include(\"${CMAKE_CURRENT_LIST_DIR}/install_headers.cmake\")" COMPONENT development)
install(EXPORT kelmara-targets NAMESPACE kelmara:: DESTINATION "${KELMARA_CMAKEDIR}" COMPONENT development)
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/kelmara-config.cmake.in" kelmara-config.cmake
  INSTALL_DESTINATION "${KELMARA_CMAKEDIR}" NO_SET_AND_CHECK_MACRO)
# Not the width of the program's own compiler is asked: the targets carry their -m32.
write_basic_package_version_file(kelmara-config-version.cmake COMPATIBILITY ${compatibility} ARCH_INDEPENDENT)
install(FILES "${CMAKE_BINARY_DIR}/kelmara-config.cmake" "${CMAKE_BINARY_DIR}/kelmara-config-version.cmake"
  DESTINATION "${KELMARA_CMAKEDIR}" COMPONENT development)
file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/kelmara.pc.in" kelmara.pc @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/kelmara.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT development)

install(TARGETS install_suite RUNTIME COMPONENT suite)
install(TARGETS ${suite_targets} RUNTIME DESTINATION "${KELMARA_SUITEDIR}" COMPONENT suite
  LIBRARY DESTINATION "${KELMARA_SUITEDIR}" COMPONENT suite)
install(DIRECTORY "${SUITE_MODULE_FOLDER}/content" DESTINATION "${KELMARA_SUITEDIR}" COMPONENT suite)

install(FILES README.md CONTRIBUTING.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT docs)
install(DIRECTORY docs DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT docs PATTERN scripts EXCLUDE
  PATTERN CMakeLists.txt EXCLUDE PATTERN Doxyfile EXCLUDE PATTERN "*.py" EXCLUDE)
