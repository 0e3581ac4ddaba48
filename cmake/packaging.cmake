# What makes the programs a product: Windows' resources, what is installed where, the Debian package.

# vkt_windows_resources(TARGET DESCRIPTION): icon, version information and manifest of a program.
if(WIN32)
    enable_language(RC)
endif()
function(vkt_windows_resources target description)
    set(VKT_PROGRAM ${target})
    set(VKT_DESCRIPTION ${description})
    set(VKT_MANIFEST ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/program.manifest.in ${VKT_MANIFEST} @ONLY)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/program.rc.in ${script} @ONLY)
    target_sources(${target} PRIVATE ${script})
    set_source_files_properties(${script} PROPERTIES
        OBJECT_DEPENDS "${VKT_MANIFEST};${PROJECT_SOURCE_DIR}/packaging/icon/vktcfgtools.ico")
endfunction()

# vkt_install_program(TARGET): into the folder that a package keeps its programs in. The program runs in a folder beside
# res/, tools/ and log/, so on Windows the package is that tree; elsewhere a launcher makes such a tree for each user.
function(vkt_install_program target)
    if(WIN32)
        install(TARGETS ${target} RUNTIME DESTINATION bin)
    else()
        install(TARGETS ${target} RUNTIME DESTINATION lib/vktcfgtools/bin)
    endif()
endfunction()

# vkt_install_link(TO FOLDER NAME): a symbolic link.
function(vkt_install_link to folder name)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
    file(CREATE_LINK ${to} ${CMAKE_BINARY_DIR}/package/${name} SYMBOLIC)
    install(FILES ${CMAKE_BINARY_DIR}/package/${name} DESTINATION ${folder})
endfunction()

# vkt_install_data(): what the window program reads, and what a package tells of itself.
function(vkt_install_data)
    set(packaging ${PROJECT_SOURCE_DIR}/packaging)
    set(resources PATTERN CMakeLists.txt EXCLUDE PATTERN "*.svg" EXCLUDE)
    if(WIN32)
        install(DIRECTORY ${PROJECT_SOURCE_DIR}/res DESTINATION . ${resources})
        install(DIRECTORY ${PROJECT_SOURCE_DIR}/tools/bps_data_list DESTINATION tools)
        install(DIRECTORY DESTINATION log)
        install(FILES ${PROJECT_SOURCE_DIR}/README.zh-CN.md DESTINATION .)
        install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/screenshots DESTINATION docs FILES_MATCHING REGEX "/screenshots/[^/]+\\.png$")
        install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION licences RENAME VKTCfgTools.txt)
        install(FILES ${PROJECT_SOURCE_DIR}/res/default/fonts/LICENSE.txt DESTINATION licences RENAME fonts.txt)
        install(FILES ${packaging}/windows/licences.txt DESTINATION licences RENAME READ-ME.txt)
        return()
    endif()
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/res DESTINATION share/vktcfgtools ${resources})
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/tools/bps_data_list DESTINATION share/vktcfgtools/tools)
    install(PROGRAMS ${packaging}/linux/vktcfgtools DESTINATION bin)
    # vkt works where it is called, and finds the timing lists beside its own folder.
    vkt_install_link(../lib/vktcfgtools/bin/vkt bin vkt)
    vkt_install_link(../../share/vktcfgtools/tools lib/vktcfgtools tools)
    install(FILES ${PROJECT_SOURCE_DIR}/cli/vkt.bash DESTINATION share/bash-completion/completions RENAME vkt)
    install(FILES ${packaging}/linux/VKTCfgTools.desktop DESTINATION share/applications)
    string(TIMESTAMP VKT_DATE "%Y-%m-%d" UTC) # SOURCE_DATE_EPOCH's day, if that is set
    configure_file(${packaging}/linux/io.vktcfgtools.VKTCfgTools.metainfo.xml.in
        ${CMAKE_BINARY_DIR}/package/io.vktcfgtools.VKTCfgTools.metainfo.xml @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/package/io.vktcfgtools.VKTCfgTools.metainfo.xml DESTINATION share/metainfo)
    foreach(size 16 24 32 48 64 128 256)
        install(FILES ${packaging}/icon/${size}x${size}.png DESTINATION share/icons/hicolor/${size}x${size}/apps
            RENAME vktcfgtools.png)
    endforeach()
    install(FILES ${packaging}/icon/vktcfgtools.svg DESTINATION share/icons/hicolor/scalable/apps)
    install(FILES ${packaging}/linux/copyright ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/README.zh-CN.md DESTINATION share/doc/vktcfgtools)
    vkt_install_compressed(vktcfgtools.1.gz share/man/man1 cat packaging/linux/vktcfgtools.1)
    vkt_install_compressed(vkt.1.gz share/man/man1 cat cli/vkt.1)
    vkt_install_compressed(changelog.gz share/doc/vktcfgtools packaging/linux/debian-changelog.sh)
    foreach(packed packaging/linux/vktcfgtools.1 cli/vkt.1 CHANGELOG.md)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${packed})
    endforeach()
endfunction()

# vkt_install_compressed(NAME FOLDER COMMAND...): what a command prints, packed; the same file every time.
function(vkt_install_compressed name folder)
    set(packed ${CMAKE_BINARY_DIR}/package/${name})
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
    execute_process(COMMAND ${ARGN} COMMAND gzip -9n WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_FILE ${packed}
        COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${packed} DESTINATION ${folder})
endfunction()

# ---- the Debian package (packaging/linux/build.sh) --------------------------------------------------------------------
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vktcfgtools)
set(CPACK_PACKAGE_CONTACT "The VKTCfgTools authors <vktcfgtools@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "configure UART/SPI to CAN and CAN FD converter modules")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Reads the configuration of a converter module over a serial port, shows it on
pages, shows the very bytes that will be sent, and writes it back. Checks CAN
FD bit timings, shows CAN traffic and sends frames.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS fonts-noto-cjk)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
    WORLD_EXECUTE)
if(NOT WIN32)
    include(CPack)
endif()
