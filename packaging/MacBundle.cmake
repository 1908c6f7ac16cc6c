# Makes `tavrel` the application of a bundle, with the watchdog and the icon in it, and says how
# it is installed and what image it is handed out in. To be included where `tavrel` is made.

set(bundle Tavrel.app)
set(icon_source ${PROJECT_SOURCE_DIR}/packaging/Tavrel.svg)
set(icon_set ${CMAKE_CURRENT_BINARY_DIR}/Tavrel.iconset)
set(icon ${CMAKE_CURRENT_BINARY_DIR}/Tavrel.icns)

add_custom_command(OUTPUT ${icon}
  COMMAND tavrel-icon ${icon_source} ${icon_set}
  COMMAND iconutil --convert icns --output ${icon} ${icon_set}
  DEPENDS ${icon_source} tavrel-icon
  VERBATIM)
target_sources(tavrel PRIVATE ${icon})
set_source_files_properties(${icon} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)

set_target_properties(tavrel PROPERTIES
  MACOSX_BUNDLE ON
  MACOSX_BUNDLE_INFO_PLIST ${CMAKE_BINARY_DIR}/Info.plist
  OUTPUT_NAME Tavrel)
# The application looks for it beside itself.
set_target_properties(display-watchdog PROPERTIES
  RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${bundle}/Contents/MacOS)

install(TARGETS tavrel BUNDLE DESTINATION .)
install(TARGETS display-watchdog RUNTIME DESTINATION ${bundle}/Contents/MacOS)
qt_generate_deploy_app_script(TARGET tavrel OUTPUT_SCRIPT deploy_script
  NO_UNSUPPORTED_PLATFORM_ERROR)
install(SCRIPT ${deploy_script})
# Of what was deployed, only what is needed stays, and what stays says on which macOS it runs.
foreach(work prune check minimum)
  install(CODE "execute_process(
    COMMAND \"${PROJECT_SOURCE_DIR}/scripts/mac-bundle\" ${work} \"\${CMAKE_INSTALL_PREFIX}/${bundle}\"
    COMMAND_ERROR_IS_FATAL ANY)")
endforeach()
# Last, since it seals all that came before.
install(CODE "execute_process(
  COMMAND \"${PROJECT_SOURCE_DIR}/scripts/sign-mac\" \"\${CMAKE_INSTALL_PREFIX}/${bundle}\"
  COMMAND_ERROR_IS_FATAL ANY)")

set(CPACK_GENERATOR DragNDrop)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-${CMAKE_OSX_ARCHITECTURES})
set(CPACK_PACKAGE_ICON ${icon})
# The system's tool for images now and then finds its own disk busy.
set(CPACK_COMMAND_HDIUTIL ${PROJECT_SOURCE_DIR}/scripts/hdiutil-again)
set(CPACK_DMG_VOLUME_NAME ${PROJECT_NAME})
include(CPack)
