# Writes the metainfo: from CMakeLists.txt into the build, and from the tests, with any address, as
# cmake -DADDRESS=... -DVERSION=... -DOUTPUT=... -P metainfo.cmake
#
# Addresses are left out without an ADDRESS, the one at which the project's home is. Below it are expected, as on the
# usual forges: /issues, and /raw/vVERSION/docs/pictures/ with the pictures of that version.
function(write_metainfo address version output)
  set(links "")
  if(address)
    string(REGEX REPLACE "/+$" "" address "${address}")
    set(pictures "${address}/raw/v${version}/docs/pictures")
    set(links "
  <url type=\"homepage\">${address}</url>
  <url type=\"bugtracker\">${address}/issues</url>
  <url type=\"vcs-browser\">${address}</url>
  <screenshots>
    <screenshot type=\"default\">
      <caption>The window after an analysis</caption>
      <caption xml:lang=\"es\">La ventana después de un análisis</caption>
      <image>${pictures}/window-light.png</image>
    </screenshot>
    <screenshot>
      <caption>The same window on a dark desktop</caption>
      <caption xml:lang=\"es\">La misma ventana en un escritorio oscuro</caption>
      <image>${pictures}/window-dark.png</image>
    </screenshot>
  </screenshots>")
  endif()

  # AppStream 1 took another element for the developers than the versions before it knew, and each objects to the
  # other's. What the build system has is what the package's readers have.
  find_program(appstreamcli appstreamcli NO_CACHE)
  set(appstream "")
  if(appstreamcli)
    execute_process(COMMAND ${appstreamcli} --version OUTPUT_VARIABLE appstream)
  endif()
  if(appstream MATCHES "[: ]0\\.")
    set(developer "<developer_name>The Reelkeep developers</developer_name>
  <developer_name xml:lang=\"es\">El equipo de Reelkeep</developer_name>")
  else()
    set(developer "<developer id=\"org.reelkeep\">
    <name>The Reelkeep developers</name>
    <name xml:lang=\"es\">El equipo de Reelkeep</name>
  </developer>")
  endif()
  configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/org.reelkeep.Reelkeep.metainfo.xml.in ${output} @ONLY)
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  write_metainfo("${ADDRESS}" "${VERSION}" "${OUTPUT}")
endif()
