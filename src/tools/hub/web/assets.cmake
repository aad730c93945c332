# Builds the dashboard and makes it C++: afterwards HUB_ASSETS is the file to compile. Everything
# happens in a copy in the build tree; npm is asked again only when the lock file has changed.

find_program(CORVANE_NODE node REQUIRED)
find_program(CORVANE_NPM npm REQUIRED)

set(web_source ${CMAKE_CURRENT_LIST_DIR})
set(web_copy ${CMAKE_CURRENT_BINARY_DIR}/web)
set(HUB_ASSETS ${CMAKE_CURRENT_BINARY_DIR}/Assets.cpp)

set(web_packages ${web_source}/package.json ${web_source}/package-lock.json ${web_source}/.npmrc)
file(GLOB web_files CONFIGURE_DEPENDS ${web_source}/*.html ${web_source}/*.css ${web_source}/*.svg
     ${web_source}/build.mjs)
file(GLOB web_parts CONFIGURE_DEPENDS ${web_source}/src/*.js ${web_source}/style/*.css)

add_custom_command(
    OUTPUT ${web_copy}/packages.stamp
    COMMAND ${CMAKE_COMMAND} -E make_directory ${web_copy}
    COMMAND ${CMAKE_COMMAND} -E copy ${web_packages} ${web_copy}
    COMMAND ${CMAKE_COMMAND} -E chdir ${web_copy}
            ${CORVANE_NPM} ci --ignore-scripts --prefer-offline --loglevel=error
    COMMAND ${CMAKE_COMMAND} -E touch ${web_copy}/packages.stamp
    DEPENDS ${web_packages}
    COMMENT "Installing the dashboard's packages"
    VERBATIM)

add_custom_command(
    OUTPUT ${HUB_ASSETS}
    COMMAND ${CMAKE_COMMAND} -E copy ${web_files} ${web_copy}
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${web_source}/src ${web_copy}/src
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${web_source}/style ${web_copy}/style
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${web_copy}/dist
    COMMAND ${CORVANE_NODE} ${web_copy}/build.mjs ${web_copy}/dist
    COMMAND ${CORVANE_NODE} ${web_source}/embed.mjs ${web_copy}/dist ${HUB_ASSETS}
    DEPENDS ${web_copy}/packages.stamp ${web_files} ${web_parts} ${web_source}/embed.mjs
    COMMENT "Building the dashboard"
    VERBATIM)
