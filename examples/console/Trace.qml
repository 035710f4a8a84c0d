import QtQuick 2.15; import HXCommon 8.0; import Console 1.0
import "TraceShapes.js" as Shapes

// A moving trace that shows the kind of a rhythm. It is drawn once for every change and then only moved.
Item {
    id: trace
    property string rhythm
    property int rate // beats/min
    property string ratio // "P waves:beats" of a block of second degree
    property bool extraSystoles
    property real amplitude // of a rhythm without rate, 0 to 1
    property bool running: true
    readonly property var turn: Shapes.turn({ rhythm: rhythm, rate: rate, ratio: ratio, extraSystoles: extraSystoles })
    readonly property int pause: 40 // ms between two places
    readonly property int speed: 125 // pixels per second
    property int moved: 0 // pixels

    clip: true
    onTurnChanged: canvas.requestPaint()
    onAmplitudeChanged: canvas.requestPaint()
    onRunningChanged: running ? clock.resume() : clock.pause()
    Accessible.role: Accessible.Graphic; Accessible.name: qsTr("Schematic trace of %1").arg(rhythm)

    Canvas {
        id: canvas
        readonly property int turnWidth: Math.round(trace.turn.length * trace.speed)
        readonly property color ink: Theme.good

        x: -(trace.moved % turnWidth)
        width: turnWidth + trace.width; height: trace.height
        onInkChanged: requestPaint()
        onPaint: {
            const levels = Shapes.levels(trace.turn, trace.amplitude, trace.speed), context = getContext("2d");
            context.clearRect(0, 0, width, height);
            context.strokeStyle = ink;
            context.lineWidth = 2;
            context.beginPath();
            for (let x = 0; x < width; ++x)
                context.lineTo(x, height * (0.6 - 0.5 * levels[x % levels.length]));
            context.stroke();
        }
    }
    PausingTimer {
        id: clock
        Component.onCompleted: { start(trace.pause); if (!trace.running) pause(); }
        onTimeout: trace.moved += trace.speed * trace.pause / 1000
    }
}
