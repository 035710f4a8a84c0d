.pragma library

// The waves that the trace is drawn from, schematic ones: each is a sum of bells [height, time, width], the height
// in R waves, the time in seconds from the R (or P) wave.
const waves = {
    P: [[0.12, 0, 0.02]],
    narrow: [[-0.14, -0.03, 0.01], [1.05, 0, 0.012], [-0.28, 0.03, 0.01], [0.25, 0.18, 0.035]],
    wide: [[0.75, 0, 0.035], [-0.45, 0.14, 0.05]],
    spike: [[0.9, 0, 0.004]],
};

// What makes a rhythm differ from regular narrow beats, each 0.14 s after its P wave.
//   qrs     the wave of the ventricles, empty for none    P      the heights of the P waves in turn
//   pr      seconds from a P wave to its beat             later  more seconds with every beat up to a dropped one
//   atria   P waves per minute, independent of the beats  spread of the intervals, as a part of one
//   spikes  of a pacer, before these waves                missed every so many spikes has no beat
//   ripple  [height, waves per minute] of the base line   turns  the beats turn around the base line
//   chaos   no beats, waves of the amplitude only
const kinds = {
    wanderingPacemaker: { P: [1, 0.5, -0.7, 0.3], spread: 0.1 },
    aFlutter: { P: [], ripple: [0.08, 300] },
    aFib: { P: [], ripple: [0.04, 420], spread: 0.35 },
    junctionalRhythm: { P: [] },
    svt: { P: [] },
    avBlock1: { pr: 0.3 },
    avBlock2I: { later: 0.07 },
    avBlock2II: {},
    avBlock3: { atria: 90, qrs: "wide" },
    asystoleIdioventricular: { P: [], qrs: "wide" },
    vt: { P: [], qrs: "wide" },
    vt2: { P: [], qrs: "wide" },
    torsadeDePoint: { P: [], qrs: "wide", turns: true },
    vf: { P: [], qrs: "", chaos: true },
    ventricularStandstill: { atria: 80, qrs: "" },
    asystole: { P: [], qrs: "" },
    sinusLBBB: { qrs: "wide" },
    sinusRBBB: { qrs: "wide" },
    pacerVVI: { P: [], qrs: "wide", spikes: ["wide"] },
    pacerDDD: { qrs: "wide", spikes: ["P", "wide"] },
    pacerVVIMalefunction: { P: [], qrs: "wide", spikes: ["wide"], missed: 3 },
};
const regular = { P: [1], qrs: "narrow", pr: 0.14, later: 0, atria: 0, spread: 0, spikes: [], missed: 0, ripple: [0, 0], turns: false, chaos: false };
const shortest = 6; // seconds that a turn lasts at least
const jitter = [0.3, -0.8, 1, -0.2, -1, 0.7, 0.5, -0.5]; // of irregular intervals; its sum is 0

// One turn of the trace, which repeats: its length in seconds and its waves {wave, at, height}.
//   patient: {rhythm: name, rate: beats per minute, ratio: "P waves:beats", extraSystoles}
function turn(patient) {
    const kind = Object.assign({}, regular, kinds[patient.rhythm]);
    const [atria, beats] = (patient.ratio || "1:1").split(":").map(Number);
    const hasBeats = patient.rate > 0 && kind.qrs !== "";
    const group = patient.extraSystoles ? 4 * beats : kind.missed || (kind.spread || kind.turns ? jitter.length : beats);
    const interval = hasBeats ? 60 / patient.rate : 1;
    const length = hasBeats ? group * interval * Math.ceil(shortest / (group * interval)) : shortest;
    const conducted = interval * beats / atria; // from one P wave to the next
    const squeeze = Math.min(1, interval / 0.6); // of fast beats
    const result = [];
    function add(wave, at, height) {
        if (kind.spikes.includes(wave))
            result.push({ wave: "spike", at: at - 0.03, height: 1 });
        result.push({ wave: wave, at: at, height: height, squeeze: squeeze });
    }

    const count = hasBeats ? Math.round(length / interval) : 0;
    for (let i = 0, p = 0; i < count; ++i) {
        if (patient.extraSystoles && i % 4 === 3) { // early, and the next beat waits
            add("wide", (i - 0.4) * interval, -1);
            ++p;
            continue;
        }
        const inGroup = i % beats, start = (Math.floor(i / beats) * atria + inGroup) * conducted;
        const R = start + interval * kind.spread * jitter[i % jitter.length] + squeeze * (kind.pr + kind.later * inGroup);
        if (kind.missed && i % kind.missed === kind.missed - 1)
            result.push({ wave: "spike", at: R - 0.03, height: 1 });
        else
            add(kind.qrs, R, kind.turns ? Math.cos(2 * Math.PI * i / jitter.length) : 1);
        for (let k = 0; kind.P.length && !kind.atria && k < (inGroup === beats - 1 ? 1 + atria - beats : 1); ++k, ++p)
            add("P", k ? start + k * conducted : R - squeeze * (kind.pr + kind.later * inGroup), kind.P[p % kind.P.length]);
    }
    let own = Math.round(kind.atria * length / 60);
    if (own && count && own % count === 0)
        ++own; // else it would look like conduction
    for (let i = 0; i < own; ++i)
        add("P", i * length / own, 1);
    return { length: length, waves: result, ripple: kind.chaos ? [0, 0] : kind.ripple, chaos: kind.chaos };
}

// The levels of a turn at every pixel.
function levels(turn, amplitude, speed) {
    const size = Math.round(turn.length * speed);
    const wave = (x, perMinute) => Math.sin(2 * Math.PI * x / size * Math.round(perMinute / 60 * turn.length));
    const result = Array.from({ length: size }, (_, x) => turn.chaos
        ? amplitude * (wave(x, 220) + wave(x, 300) + wave(x, 410)) / 4 : turn.ripple[0] * wave(x, turn.ripple[1]));
    for (const event of turn.waves) {
        const squeeze = event.squeeze || 1;
        for (const [height, time, width] of waves[event.wave]) {
            const centre = Math.round(event.at * speed) + time * squeeze * speed, reach = 4 * width * squeeze * speed;
            for (let x = Math.floor(centre - reach); x <= centre + reach; ++x)
                result[(x % size + size) % size] += event.height * height * Math.exp(-Math.pow((x - centre) / (width * squeeze * speed), 2) / 2);
        }
    }
    return result;
}
