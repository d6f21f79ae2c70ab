# The target docs writes the reference of the headers that a host includes to build/release/docs/html/index.html.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E echo "The reference needs doxygen: apt-get install doxygen, then configure again."
    COMMAND ${CMAKE_COMMAND} -E false
    VERBATIM)
else()
  set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/docs)
  set(DOXYGEN_PROJECT_BRIEF "${PROJECT_DESCRIPTION}")
  set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
  set(DOXYGEN_EXTRACT_ALL YES)
  set(DOXYGEN_SORT_MEMBER_DOCS NO)
  set(DOXYGEN_DISABLE_INDEX NO)
  set(DOXYGEN_STRIP_FROM_PATH ${PROJECT_SOURCE_DIR})
  set(DOXYGEN_HAVE_DOT NO)
  set(DOXYGEN_QUIET YES)
  set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
  doxygen_add_docs(docs service/RigidBodySystem.hpp host/Plugin.hpp oxmath/oxmath.h
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
endif()
