/*
 * Application, watchdog and window server, with two displays. Any of the processes may be killed,
 * stopped and continued, or delayed, between any two of its steps. What each step stands for,
 * and what is left out, is in README.md beside this.
 *
 * Time is no number here. A time-out can happen when the other side is stopped, and then must
 * happen at some time if that stays so; as a fault it also happens when that is only slow.
 *
 * Faults are of any kind and come at any moment, but are FAULTS in all. So every run has an end,
 * which is checked too, and "in the end" is a matter of the states in which nobody can do
 * anything more.
 *
 * scripts/check-model runs it: as it is; with a fault planted, -DFORGETS, -DGOODBYE or -DUNREPEATED; with
 * -DRESCUES=1; with an application that always quits in the end, -DQUITS; and with
 * a claim that goes too far, -DLIMIT=1 to 5.
 */

#ifndef FAULTS
#define FAULTS 2
#endif
#define REQUESTS 2     /* how often the user flips a switch */
#define TRIES 4        /* more than there are faults; in the program nine */
#define QUIT_TRIES 2   /* fewer, so that the application also fails; in the program nine too */
#ifndef RESCUES
#define RESCUES 0      /* how often a display is brought back beside a change that hangs */
#endif
#define CRASHES 3      /* how many watchdogs a request to switch on is handed to */

#define NOBODY 0
#define APPLICATION 1
#define WATCHDOG(s) (2 + s)
#define NONE 2         /* no watchdog: changes are made in the application */

mtype = { switchOff, switchOn, alreadyOff, goodbye };
mtype = { success, refused, unknown };          /* 0, 1004, 1006 */
mtype = { answered, died, hung };

/* The server. */
bool on[2] = true;
byte grab = NOBODY;
bool ours[2];                                   /* off because of us: only claims read it */

/* The application. */
bool appAlive = true, appStopped, appEnded;
bool mayQuit;                                   /* or it would always do so in the end */
bool appOff[2], appDoubt[2], appRefused[2];     /* switchedOff_, its doubts, refused_ */
byte current = NONE;
bool asking;                                    /* a watchdog, and has no answer yet */
bool repeat[2];                                 /* rescues that are still in the queue */
byte rescues = RESCUES;
bool saved[2];                                  /* last asked to be on: only a claim reads it */

/* The watchdogs: one, and for a while its successor. */
chan toWatchdog[2] = [4] of { mtype, byte };
chan toApp[2] = [1] of { mtype };
bool alive[2], stopped[2], closed[2], parked[2], dismissed;
bool off[4];                                    /* switchedOff_ of watchdog s: off[2 * s + d] */
bool informed[2], killed[2];                    /* only claims read these */

byte requests = REQUESTS, faults = FAULTS;

#define aFault faults > 0 -> faults--
#define nothingOn (!on[0] && !on[1])
#define serverAnswers (grab == NOBODY)

/*
 * One change of one display, with the server grabbed. Leaves the outcome in `status`. Whoever is
 * killed in between loses the grab; whoever is stopped keeps it.
 */
inline change(who, x, wanted) {
    atomic { grab == NOBODY -> grab = who };
    atomic {
        if
        :: !wanted && !on[1 - x] -> status = refused
        :: wanted || on[1 - x] ->
            if
            :: status = success
            :: aFault; status = refused
            :: aFault; status = unknown
            fi
        fi
    };
    if
    :: atomic {
           status != refused ->
           ours[x] = (!wanted && (on[x] || ours[x]));
           on[x] = wanted;
           assert(wanted || !nothingOn)         /* our change never leaves nothing on */
       }
    :: status != success
    fi;
    grab = NOBODY
}

inline endWatchdog(s) {
    alive[s] = false;
    stopped[s] = false;
    if
    :: grab == WATCHDOG(s) -> grab = NOBODY
    :: else
    fi
}

/* ---- The application's side */

inline startIfDue(s) {
    if
    :: atomic { aFault; current = NONE }
    :: atomic {
           parked[s] ->
           do
           :: toWatchdog[s]?_, _
           :: toApp[s]?_
           :: empty(toWatchdog[s]) && empty(toApp[s]) -> break
           od;
           off[2 * s] = false; off[2 * s + 1] = false;
           closed[s] = false; killed[s] = false; informed[s] = false; parked[s] = false;
           alive[s] = true;
           current = s
       };
#ifndef FORGETS
       if
       :: atomic { appOff[0] -> toWatchdog[s]!alreadyOff, 0 }
       :: !appOff[0]
       fi;
       if
       :: atomic { appOff[1] -> toWatchdog[s]!alreadyOff, 1 }
       :: !appOff[1]
       fi;
#endif
       informed[s] = true
    fi
}

inline replaceWatchdog() {
    former = current;
    startIfDue(1 - former);
    atomic {
        if
        :: current == former -> current = NONE
        :: else
        fi;
        killed[former] = true;
        endWatchdog(former)
    }
}

inline ask(kind, x) {
    if
    :: atomic { alive[current] -> toWatchdog[current]!kind, x; asking = true };
        if
        :: atomic { toApp[current]?status -> reply = answered }
        :: !alive[current] && empty(toApp[current]) -> reply = died
        :: stopped[current] && empty(toApp[current]) -> reply = hung
        :: atomic { empty(toApp[current]) && aFault; reply = hung }
        fi;
        asking = false
    :: !alive[current] -> reply = died
    fi
}

inline appSwitchOn(x) {
    crashes = 0;
    reply = died;
    do
    :: current != NONE && reply == died && crashes < CRASHES ->
        ask(switchOn, x);
        if
        :: reply != answered -> replaceWatchdog(); crashes++
        :: else
        fi
    :: else -> break
    od;
    if
    :: reply != answered -> change(APPLICATION, x, true)
    :: else
    fi;
    atomic {
        appRefused[x] = (status != success);
        if
        :: status == success -> appOff[x] = false; appDoubt[x] = false
        :: else
        fi
    }
}

inline repeatRescues() {
    do
    :: atomic { repeat[0] -> repeat[0] = false };
#ifndef UNREPEATED
        appSwitchOn(0)
#endif
    :: atomic { repeat[1] -> repeat[1] = false };
#ifndef UNREPEATED
        appSwitchOn(1)
#endif
    :: !repeat[0] && !repeat[1] -> break
    od
}

/* What was rescued beside a change is on when that has been made, unless it was refused. */
inline judgeRescues() {
    d_step {
        assert(!saved[0] || repeat[0] || appRefused[0] || on[0]);
        assert(!saved[1] || repeat[1] || appRefused[1] || on[1])
    }
}

inline handOver(x) {
    if
    :: atomic {
           serverAnswers && !on[x] && current != NONE && alive[current] ->
           toWatchdog[current]!alreadyOff, x;
           appOff[x] = true
       }
    :: serverAnswers && (on[x] || current == NONE || !alive[current])
    fi
}

inline appSwitchOff(x) {
    saved[x] = false;
    wasOff = appOff[x];
    appOff[x] = true;
    if
    :: current != NONE -> ask(switchOff, x)
    :: current == NONE -> change(APPLICATION, x, false); reply = answered
    fi;
    if
    :: reply != answered -> replaceWatchdog(); appSwitchOn(x)
    :: reply == answered && status == refused && !wasOff -> appOff[x] = false
    :: reply == answered && status == unknown && !wasOff -> appDoubt[x] = true
    :: else
    fi
}

inline quit() {
    handOver(0);
    handOver(1);
    if
    :: serverAnswers && !on[0] -> appSwitchOn(0)
    :: serverAnswers && (on[0] || appOff[0])   /* we may not have heard yet that it is off */
    fi;
    if
    :: serverAnswers && !on[1] -> appSwitchOn(1)
    :: serverAnswers && (on[1] || appOff[1])
    fi;
    repeatRescues();
    tries = 0;
    do
    :: tries < QUIT_TRIES && (appOff[0] || appRefused[0] || appOff[1] || appRefused[1]) ->
        if
        :: appOff[0] || appRefused[0] -> appSwitchOn(0)
        :: else
        fi;
        if
        :: appOff[1] || appRefused[1] -> appSwitchOn(1)
        :: else
        fi;
        tries++
    :: else -> break
    od;
    if
    :: current != NONE ->
        if
#ifdef GOODBYE
        :: true ->
#else
        :: !appOff[0] && !appOff[1] && !appRefused[0] && !appRefused[1] ->
#endif
            if
            :: atomic {
                   alive[current] -> toWatchdog[current]!goodbye, 0;
                   dismissed = true;
                   closed[current] = true
               }
            :: !alive[current]
            fi;
            if
            :: !alive[current]
            :: atomic {
                   stopped[current] -> killed[current] = true;
                   endWatchdog(current)
               }
            fi
#ifndef GOODBYE
        :: else -> closed[current] = true
#endif
        fi
    :: current == NONE
    fi;
    atomic { appEnded = true; appAlive = false }
}

active proctype Application() provided (!appStopped) {
    mtype status, reply;
    byte crashes, tries, former;
    bool wasOff;

    {
        startIfDue(0);
        do
        :: atomic { requests > 0 && serverAnswers && on[0] && on[1] -> requests-- };
            if
            :: appSwitchOff(0)
            :: appSwitchOff(1)
            fi;
            repeatRescues();
            judgeRescues()
        :: atomic { requests > 0 && appOff[0] -> requests-- }; appSwitchOn(0); repeatRescues()
        :: current != NONE && !alive[current] -> replaceWatchdog()
        :: current == NONE && parked[0] -> startIfDue(0)
        :: serverAnswers && nothingOn -> appSwitchOn(0); appSwitchOn(1); repeatRescues()
        :: atomic {
               serverAnswers && (appDoubt[0] || appDoubt[1]) ->
               if
               :: appDoubt[0] && on[0] -> appOff[0] = false
               :: else
               fi;
               if
               :: appDoubt[1] && on[1] -> appOff[1] = false
               :: else
               fi;
               appDoubt[0] = false; appDoubt[1] = false
           }
        :: mayQuit -> quit(); break
        od
    } unless {
        !appAlive
    }
}

/*
 * Another thread of the application, which brings a display back and has waited for long behind
 * a change: it does so itself, and leaves its request where it was.
 */
active proctype Rescuer() provided (!appStopped) {
    mtype status;
    byte x;

    {
        do
        :: atomic {
               rescues > 0 && asking -> rescues--;
               if
               :: x = 0
               :: x = 1
               fi;
               repeat[x] = true;
               saved[x] = true
           };
           change(APPLICATION, x, true);
           saved[x] = (saved[x] && status == success)
        od
    } unless {
        !appAlive
    }
}

/* ---- The watchdog's side */

inline carryOut(s, x, wanted) {
    change(WATCHDOG(s), x, wanted);
    d_step {
        if
        :: status == success && wanted -> off[2 * s + x] = false
        :: status != refused && !wanted -> off[2 * s + x] = true
        :: else
        fi
    }
}

inline insistOn(s) {
    tries = 0;
    do
    :: tries < TRIES && (off[2 * s] || off[2 * s + 1]) ->
        if
        :: off[2 * s + 1] -> carryOut(s, 1, true)
        :: else
        fi;
        if
        :: off[2 * s] -> carryOut(s, 0, true)
        :: else
        fi;
        tries++
    :: else -> break
    od
}

inline serve(s) {
    do
    :: atomic { toWatchdog[s]?switchOff, x };
        carryOut(s, x, false);
        toApp[s]!status
    :: atomic { toWatchdog[s]?switchOn, x };
        carryOut(s, x, true);
        toApp[s]!status
    :: atomic { toWatchdog[s]?alreadyOff, x; off[2 * s + x] = true }
#ifdef GOODBYE
    :: toWatchdog[s]?goodbye, _ -> break
#else
    :: toWatchdog[s]?goodbye, _ -> insistOn(s); break
#endif
    :: atomic {
           empty(toWatchdog[s]) && serverAnswers && nothingOn && appAlive && !closed[s] &&
           (appStopped || faults > 0) ->
           if
           :: appStopped
           :: !appStopped -> faults--
           fi
       };
        carryOut(s, 0, true);
        carryOut(s, 1, true)
    :: empty(toWatchdog[s]) && (!appAlive || closed[s]) ->
        insistOn(s);
        break
    od
}

proctype Watchdog(byte s) provided (!stopped[s]) {
    mtype status;
    byte x, tries;
    do
    :: parked[s] = true;
        !parked[s];
        {
            serve(s);
            alive[s] = false
        } unless {
            !alive[s]
        }
    od
}

/* ---- Everybody else */

inline mayKillAndStop(s) {
    if
    :: atomic { alive[s] && aFault; killed[s] = true; endWatchdog(s) }
    :: atomic { alive[s] && !stopped[s] && aFault; stopped[s] = true }
    :: atomic { stopped[s] -> stopped[s] = false }
    fi
}

/* ---- What must hold in the end, when faults have ceased and nobody can do anything more */

#define ready(s) (informed[s] && !killed[s] && !stopped[s])
#define somebodyKnows (ready(0) || ready(1))
#define dead (!appAlive && !appEnded)
#define hungApp (appAlive && appStopped)
#define well (appAlive && !appStopped)
#define allOurs (!ours[0] && !ours[1])

inline judge() {
    d_step {
        /* The application is dead and a watchdog knows: nothing of ours is off. */
        assert(!(serverAnswers && dead && somebodyKnows) || allOurs);

        /* The application hangs and a watchdog knows: something is on. */
        assert(!(serverAnswers && hungApp && !dismissed && somebodyKnows) || !nothingOn);

        /* The application is well, whatever has become of the watchdog: something is on. */
        assert(!(serverAnswers && well) || !nothingOn);

        /* The application has ended in good order: nothing of ours is off. */
        assert(!(serverAnswers && appEnded) || allOurs);
#if LIMIT == 1
        /* Nobody can: both killed, or the application before it could tell its next watchdog. */
        assert(!(serverAnswers && dead) || allOurs);
#endif
#if LIMIT == 2
        /* Nobody can: the application hangs and no watchdog is there. */
        assert(!(serverAnswers && hungApp && !dismissed) || !nothingOn);
#endif
#if LIMIT == 3
        /* Nobody does: bring back one display of two while the application hangs. */
        assert(!(serverAnswers && hungApp && somebodyKnows) || allOurs);
#endif
#if LIMIT == 4
        /* Nobody can: somebody was stopped with the server grabbed. */
        assert(!(hungApp && !dismissed && somebodyKnows) || !nothingOn);
#endif
#if LIMIT == 5
        /* Nobody does: look after an application that hangs after its goodbye. */
        assert(!(serverAnswers && hungApp && somebodyKnows) || !nothingOn);
#endif
    }
}

active proctype Fate() {
    do
    :: mayKillAndStop(0)
    :: mayKillAndStop(1)
    :: atomic {
           appAlive && aFault;
           appAlive = false; appStopped = false;
           if
           :: grab == APPLICATION -> grab = NOBODY
           :: else
           fi
       }
    :: atomic { appAlive && !appStopped && aFault; appStopped = true }
    :: atomic { appStopped -> appStopped = false }
    :: atomic {
           serverAnswers && aFault;
           if
           :: on[0] = false; saved[0] = false
           :: on[1] = false; saved[1] = false
           :: on[0] = false; on[1] = false; saved[0] = false; saved[1] = false
           fi
       }
    :: break
    od;
    timeout ->
    judge()
}

init {
    atomic {
        if
        :: mayQuit = true
#ifndef QUITS
        :: mayQuit = false
#endif
        fi;
        run Watchdog(0);
        run Watchdog(1)
    }
}
