#ifndef TESSEL_TREE_MACHINES_H
#define TESSEL_TREE_MACHINES_H

struct STreeOptions;

/// Hands the galleries to tessel-tree on other machines, in groups, through GNU parallel. Machines
/// that don't answer are left out. What they print goes to standard error. Returns when all have
/// ended, or when the run is interrupted. False where GNU parallel can't be started; what a machine
/// could not finish is no failure, since a run over all galleries follows here.
bool RunOnMachines(const STreeOptions& options);

#endif
