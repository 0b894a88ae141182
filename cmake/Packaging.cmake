# Installation, and the packages that `cpack` makes.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)
set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZelUtil)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS ZelUtil ZelUtilStatic EXPORT ZelUtilTargets
    RUNTIME COMPONENT Runtime
    LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
    ARCHIVE COMPONENT Development
    FILE_SET HEADERS COMPONENT Development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}) # for CMake before 3.23, which has no FILE_SET
install(FILES ${compiler_runtime} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)

# For CMake.
install(EXPORT ZelUtilTargets NAMESPACE ZelUtil:: DESTINATION ${config_dir} COMPONENT Development)
configure_package_config_file(cmake/ZelUtilConfig.cmake.in ${PROJECT_BINARY_DIR}/ZelUtilConfig.cmake
    INSTALL_DESTINATION ${config_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZelUtilConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZelUtilConfig.cmake ${PROJECT_BINARY_DIR}/ZelUtilConfigVersion.cmake
    DESTINATION ${config_dir} COMPONENT Development)

# For pkg-config. The paths are relative to the .pc file, so the installation can be moved.
string(REGEX REPLACE "[^/]+" ".." up ${pkgconfig_dir})
string(REPLACE "Threads::Threads" "pthread" platform_flags "${platform_libraries}")
list(TRANSFORM platform_flags PREPEND -l)
list(JOIN platform_flags " " platform_flags)
configure_file(cmake/ZelUtil.pc.in ${PROJECT_BINARY_DIR}/ZelUtil.pc @ONLY)
configure_file(cmake/ZelUtilStatic.pc.in ${PROJECT_BINARY_DIR}/ZelUtilStatic.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ZelUtil.pc ${PROJECT_BINARY_DIR}/ZelUtilStatic.pc
    DESTINATION ${pkgconfig_dir} COMPONENT Development)

if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

set(processor ${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_GENERATOR DEB TGZ)
if(is_x86 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(processor i686)
    set(CPACK_GENERATOR TGZ) # on a 64-bit system, Debian's tools would derive wrong dependencies
endif()
if(WIN32)
    set(CPACK_GENERATOR ZIP)
endif()
set(CPACK_SYSTEM_NAME ${CMAKE_SYSTEM_NAME}-${processor})
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS # independent of the umask
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# Two Debian packages: one to run programs with, one to build them with.
set(CPACK_PACKAGE_CONTACT "ZelUtil maintainers <zelutil@localhost>")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The shared library, which programs run with.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, the static library, and what CMake and pkg-config need.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzelutil${interface_version})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzelutil-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
if(ZELUTIL_XCB) # programs that link the static library link libxcb too
    string(APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ", libxcb1-dev")
endif()
include(CPack)
