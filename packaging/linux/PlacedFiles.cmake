# Run while the application is installed: writes the files that name the place it is put to, which
# is not known before. Wants to be told `templates` and their values, `bindir`, `libexecdir`,
# `datadir`, `mandir` and `gzip`. DESTDIR goes before the place, and is in no file.

cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX OUTPUT_VARIABLE prefix)
foreach(kind bindir libexecdir datadir mandir)
  cmake_path(ABSOLUTE_PATH ${kind} BASE_DIRECTORY ${prefix} NORMALIZE OUTPUT_VARIABLE full_${kind})
endforeach()

function(place template file)
  configure_file(${templates}/${template} $ENV{DESTDIR}${file} @ONLY
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

set(service ${full_datadir}/dbus-1/services/${TAVREL_APPLICATION_ID}.service)
place(tavrel.service.in ${service})

set(manual ${full_mandir}/man1/tavrel.1)
place(tavrel.1.in ${manual})
execute_process(COMMAND ${gzip} -9nf $ENV{DESTDIR}${manual} COMMAND_ERROR_IS_FATAL ANY)

foreach(file ${service} ${manual}.gz)
  message(STATUS "Installing: $ENV{DESTDIR}${file}")
  list(APPEND CMAKE_INSTALL_MANIFEST_FILES ${file})
endforeach()
