# Proof that the simulation can fail: each mutant is the core with one fault in a copy of
# one source, and its tests pass only when the fault is found: one when random worlds find it,
# the other when a small world does, in one of all orders of a few events.

# tavrel_mutant(NAME SOURCE FROM TO [NOT_IN_SMALL_WORLDS]): replaces FROM, which must be there,
# by TO. Small worlds have no helper, and no second copy of the application.
function(tavrel_mutant name source from to)
  set(original ${PROJECT_SOURCE_DIR}/${source})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${original})
  file(READ ${original} text)
  string(FIND "${text}" "${from}" position)
  if(position EQUAL -1)
    message(FATAL_ERROR "Mutant ${name}: ${source} no longer holds \"${from}\"")
  endif()
  string(REPLACE "${from}" "${to}" mutated "${text}")
  get_filename_component(file ${source} NAME)
  set(copy ${CMAKE_CURRENT_BINARY_DIR}/mutants/${name}/${file})
  set(former "")
  if(EXISTS ${copy})
    file(READ ${copy} former)
  endif()
  if(NOT former STREQUAL mutated)
    file(WRITE ${copy} "${mutated}")
  endif()

  # The copy defines all that the library's member does, so the linker takes the copy.
  get_filename_component(folder ${original} DIRECTORY)
  set_source_files_properties(${original} DIRECTORY ${folder}
    PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  add_executable(mutant-${name} ${copy})
  target_link_libraries(mutant-${name} PRIVATE tavrel_simulate_main)
  target_precompile_headers(mutant-${name} REUSE_FROM tavrel_precompiled)
  set_target_properties(mutant-${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/mutants)
  add_test(NAME simulation.finds.${name}
    COMMAND mutant-${name} --seed 1 --hours 480 --repeat-every 20 --jobs 1
      --expect-violation)
  set(tests simulation.finds.${name})
  if(NOT "NOT_IN_SMALL_WORLDS" IN_LIST ARGN)
    add_test(NAME simulation.allOrders.finds.${name}
      COMMAND mutant-${name} --all-orders-of 7 --expect-violation)
    list(APPEND tests simulation.allOrders.finds.${name})
  endif()
  set_tests_properties(${tests} PROPERTIES LABELS simulation TIMEOUT 900)
endfunction()

tavrel_mutant(maskWithoutRemove controller/Watch.cpp
  "(displayChange::add | displayChange::remove)" "displayChange::add")
tavrel_mutant(debounceThatDoesNotCancel controller/Watch.cpp
  "topologyRecoveryWorkItem_->cancel();" "")
tavrel_mutant(beginReportsCount controller/Watch.cpp
  "(flags & displayChange::beginConfiguration) != 0" "flags == displayChange::beginConfiguration")
tavrel_mutant(suppressionIgnored controller/Watch.cpp
  "platform_.wallClock.now() >= suppressTopologyRestoreUntil_" "true")
tavrel_mutant(lateLostDisplayCheck controller/Watch.cpp
  "lostDisplayCheckDelay = 350ms" "lostDisplayCheckDelay = 900ms")
tavrel_mutant(guardHonoursSuppression controller/UsableDisplayGuard.cpp
  "if (isAutomaticRecoveryRunning_) {"
  "if (isAutomaticRecoveryRunning_ || platform_.wallClock.now() < suppressTopologyRestoreUntil_) {")
tavrel_mutant(guardCountsInactiveDisplays controller/UsableDisplayGuard.cpp
  "moment.isOnline(display) && moment.isActive(display)" "moment.isOnline(display)")
tavrel_mutant(verificationForgetsTheFlag controller/Restoration.cpp
  "isAutomaticRecoveryRunning_ = false;" "")
tavrel_mutant(restorationsOverlap controller/Restoration.cpp
  "if (isAutomaticRecoveryRunning_) {" "if (false) {")
tavrel_mutant(passStopsAtTheFirst controller/Restoration.cpp
  "self->platform_.displaySwitch.setDisplayEnabled(candidate.id, true);"
  "if (self->platform_.displaySwitch.setDisplayEnabled(candidate.id, true) == 0) { break; }")
tavrel_mutant(slowSafetyTimer controller/DisplayController.cpp
  "safetyInterval = std::chrono::seconds(1)" "safetyInterval = std::chrono::seconds(3)")
tavrel_mutant(lastDisplayByTheList controller/Switching.cpp
  "isLive(*moment, other.displayID())" "other.isOn")
tavrel_mutant(failedSwitchStaysBusy controller/Switching.cpp
  "entry.isBusy = false;" "entry.isBusy = error.has_value();")
tavrel_mutant(failedWakeStaysBusy controller/WakeAll.cpp
  "entry.isBusy = false;" "entry.isBusy = failed;")
tavrel_mutant(statusWithoutText controller/Refresh.cpp
  "successMessage.value_or(countText(displays_.size()))" "successMessage.value_or(countText(displays_.size()).substr(0, 0))")
tavrel_mutant(failedRefreshNeverEnds controller/Refresh.cpp
  "    setIsRefreshing(false);\n    if (" "    setIsRefreshing(std::holds_alternative<ErrorText>(outcome));\n    if (")
tavrel_mutant(registryForgetsOfflineDisplays registry/DisplayRegistry.cpp
  "retentionSeconds" "0")
tavrel_mutant(quitCountsInactiveDisplays app/AppDelegate.cpp
  "!moment->isActive(display.id)" "!moment->isOnline(display.id)")
tavrel_mutant(lastDisplayMayGo platform/LastDisplayGate.cpp
  "return isLast(display) ?" "return false ?")
tavrel_mutant(patientInTheDark watchdog/application/WatchdogSupervisor.cpp
  "(isUrgent_ || !*isUsable)" "isUrgent_" NOT_IN_SMALL_WORLDS)
tavrel_mutant(patientWhenQuitting watchdog/application/WatchdogSupervisor.cpp
  "(isUrgent_ || !*isUsable)" "!*isUsable" NOT_IN_SMALL_WORLDS)
