import QtQuick 2.15; import HXCommon 8.0; import Console 1.0

// A moving trace of one drawn heartbeat, the same for every rhythm, or of an irregular wave. It is no ECG.
Canvas {
    id: trace
    property int rate // beats/min
    property real amplitude // of the irregular wave, 0 to 1; there are no beats then
    property bool running: true
    readonly property int pause: 40 // ms between pictures
    readonly property int speed: 120 // pixels per second
    property real time: 0 // s
    property real beats: 0
    // Height, time and duration in seconds of the waves of a beat: P, Q, R, S, T.
    readonly property var waves: [[0.12, 0.06, 0.02], [-0.12, 0.125, 0.008], [1, 0.145, 0.009],
                                  [-0.25, 0.165, 0.009], [0.25, 0.29, 0.03]]

    function level(secondsAgo) {
        if (amplitude > 0)
            return amplitude * [23, 31, 43].reduce((sum, speed) => sum + Math.sin(speed * (time - secondsAgo)), 0) / 4;
        const beat = beats - secondsAgo * rate / 60;
        const inBeat = (beat - Math.floor(beat)) * 60 / Math.max(1, rate);
        const bell = (at, duration) => Math.exp(-Math.pow((inBeat - at) / duration, 2) / 2);
        return rate > 0 ? waves.reduce((sum, [height, at, duration]) => sum + height * bell(at, duration), 0) : 0;
    }
    onRunningChanged: running ? clock.resume() : clock.pause()
    onPaint: {
        const context = getContext("2d");
        context.clearRect(0, 0, width, height);
        context.strokeStyle = Theme.good;
        context.lineWidth = 2;
        context.beginPath();
        for (let x = 0; x < width; ++x)
            context.lineTo(x, height * (0.7 - 0.6 * level((width - x) / speed)));
        context.stroke();
    }

    PausingTimer {
        id: clock
        Component.onCompleted: { start(trace.pause); if (!trace.running) pause(); }
        onTimeout: {
            trace.time += trace.pause / 1000;
            trace.beats += trace.rate / 60 * trace.pause / 1000;
            trace.requestPaint();
        }
    }
}
