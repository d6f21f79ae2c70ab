# The man page of each installed program, made from its --help if help2man is installed and the programs can run here.
# LUMO_MAN_PAGES names the pages.
set(LUMO_MAN_PAGES)
find_program(HELP2MAN help2man)
mark_as_advanced(HELP2MAN)
function(add_man_page program summary)
  set(page ${PROJECT_BINARY_DIR}/share/man/man1/${program}.1)
  add_custom_command(OUTPUT ${page}
    COMMAND ${HELP2MAN} --no-info "--name=${summary}" --output=${page} $<TARGET_FILE:${program}>
    DEPENDS ${program}
    VERBATIM)
  set(LUMO_MAN_PAGES ${LUMO_MAN_PAGES} ${page} PARENT_SCOPE)
endfunction()
if(NOT HELP2MAN)
  message(STATUS "No man pages: help2man is not installed")
elseif(NOT CMAKE_CROSSCOMPILING AND NOT LUMO_SANITIZE)
  add_man_page(lumo-inspect "set a state of the robot and show the results")
  add_man_page(lumo-digest "print hashes of the results in many states")
  add_man_page(lumo-urdf "print the robot as URDF")
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/share/man/man1)
  add_custom_target(lumo_man ALL DEPENDS ${LUMO_MAN_PAGES})
endif()
