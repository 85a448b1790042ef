# seal(BUNDLE FILE...): signs the bundle ad hoc, at the end of the build, and again whenever one of the files has changed.
# What identity a release is signed with does not matter here: Packaging/release sees to that.
function(seal bundle)
    set(packaging ${CMAKE_SOURCE_DIR}/Packaging)
    file(GLOB signer CONFIGURE_DEPENDS ${packaging}/sign ${packaging}/signing/*.py ${packaging}/disk_image.py)
    set(resources ${bundle}/Contents/_CodeSignature/CodeResources)
    add_custom_command(OUTPUT ${resources}
        COMMAND ${CMAKE_COMMAND} -E env --unset=VANTOREL_SIGNING_IDENTITY --unset=VANTOREL_NOTARY_PROFILE
            ${packaging}/sign ${bundle}
        COMMAND ${CMAKE_COMMAND} -E touch ${resources} # newer than the program, which signing has changed, too
        DEPENDS ${ARGN} ${signer}
        COMMENT "Sealing ${bundle}" VERBATIM)
    add_custom_target(seal ALL DEPENDS ${resources})
endfunction()
