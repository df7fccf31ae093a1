# The panel: a library of its own, because Boost.Beast is heavy to compile, and a page that npm builds and that becomes
# part of it. Where one of them is missing, pathdesk is built without a panel and says so when it is asked for one.
set(page_source ${CMAKE_SOURCE_DIR}/web)
find_package(Boost 1.74 QUIET)
find_program(NPM npm)
set(missing "")
if(NOT Boost_FOUND)
  string(APPEND missing " Boost")
endif()
if(NPM)
  # The packages that the lock file names, again whenever it has changed.
  set(installed ${page_source}/node_modules/.package-lock.json)
  if(NOT EXISTS ${installed} OR ${page_source}/package-lock.json IS_NEWER_THAN ${installed})
    execute_process(COMMAND ${NPM} ci --ignore-scripts WORKING_DIRECTORY ${page_source} RESULT_VARIABLE failed
                    OUTPUT_QUIET ERROR_VARIABLE why)
    if(failed)
      message(WARNING "npm ci: ${why}")
      string(APPEND missing " the page's packages")
    else()
      file(TOUCH ${installed})
    endif()
  endif()
else()
  string(APPEND missing " npm")
endif()

if(missing STREQUAL "")
  set(PATHDESK_HAS_PANEL ON)
  file(GLOB_RECURSE page_files CONFIGURE_DEPENDS ${page_source}/src/* ${page_source}/index.html)
  set(embedded ${CMAKE_BINARY_DIR}/generated/embedded_page.cpp)
  add_custom_command(
    OUTPUT ${embedded}
    COMMAND ${NPM} run --silent build -- --outDir ${CMAKE_BINARY_DIR}/page --emptyOutDir --logLevel warn
    COMMAND ${CMAKE_COMMAND} -DPAGE=${CMAKE_BINARY_DIR}/page -DOUT=${embedded} -P ${CMAKE_SOURCE_DIR}/cmake/embed_page.cmake
    DEPENDS ${page_files} ${page_source}/package-lock.json ${page_source}/package.json ${page_source}/vite.config.ts
            ${page_source}/tsconfig.json ${CMAKE_SOURCE_DIR}/cmake/embed_page.cmake
    WORKING_DIRECTORY ${page_source}
    VERBATIM)
  file(GLOB panel_sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/desk/panel/*.cpp)
  list(FILTER panel_sources EXCLUDE REGEX "/no_panel\\.cpp$")
  add_library(layer_panel STATIC ${panel_sources} ${embedded})
  target_include_directories(layer_panel SYSTEM PRIVATE ${Boost_INCLUDE_DIRS})
else()
  set(PATHDESK_HAS_PANEL OFF)
  message(STATUS "pathdesk is built without its panel, as there is no${missing}")
  add_library(layer_panel STATIC ${CMAKE_SOURCE_DIR}/src/desk/panel/no_panel.cpp)
endif()
target_link_libraries(layer_panel PUBLIC layer_desk PRIVATE nlohmann_json::nlohmann_json)

# The panel in a real browser, one test after the other; skipped where there is no browser.
function(panel_tests)
  find_program(NODE node)
  if(NOT PATHDESK_HAS_PANEL OR NOT NODE)
    return()
  endif()
  add_test(NAME panel_in_browser COMMAND ${NODE} ${page_source}/tests/run.mjs)
  set_tests_properties(panel_in_browser PROPERTIES
                       ENVIRONMENT "PATHDESK=$<TARGET_FILE:pathdesk>" SKIP_RETURN_CODE 77 TIMEOUT 500 RUN_SERIAL ON)
endfunction()
