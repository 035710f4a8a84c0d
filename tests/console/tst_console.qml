import QtQuick 2.15
import QtQuick.Controls 2.15
import QtTest 1.15
import HXCommon 8.0
import Console 1.0

TestCase {
    name: "console"
    property var window

    function initTestCase() {
        setup.watchMessages(true);
        window = Qt.createComponent("qrc:/console/Main.qml").createObject(null, { width: 1024, height: 600 });
        SimulatedManikin.noise = 0; // before anything is sent
        parent = window.contentItem; // keys go to the window of the test
        tryCompare(window, "active", true);
    }
    function cleanupTestCase() {
        parent = null;
        window.destroy();
        setup.watchMessages(false);
    }
    function cleanup() { compare(setup.takeWarnings(), []); }

    function find(...names) { return names.reduce((item, name) => findChild(item, name), window.contentItem); }
    function click(...names) {
        for (let item = find(...names); item; item = item.parent)
            waitForItemPolished(item);
        mouseClick(find(...names));
    }
    function clickAt(slider, part) { mouseClick(slider, slider.leftPadding + part * slider.availableWidth, slider.height / 2); }
    function chooseRhythm(id) {
        const combo = find("rhythm");
        combo.activated(combo.currentIndex = combo.indexOfValue(id));
    }
    function visibleItems(item, accept) {
        const below = Array.from(item.children).filter(child => child.visible).map(child => visibleItems(child, accept));
        return (accept(item) ? [item] : []).concat(...below);
    }
    function controls() {
        const types = [Button, Switch, CheckBox, Slider, ComboBox, SpinBox, Dial, TextField];
        return visibleItems(window.contentItem, item => item.enabled && types.some(type => item instanceof type));
    }

    function test_patient_data() { // waves of a turn of the trace: P, narrow and wide beats, spikes of a pacer
        return [
            { tag: "range", id: 7, limits: [20, 200], extra: [1, 1, 1, 1, 1], waves: [8, 8, 0, 0] },
            { tag: "range of a baby", age: "Baby", id: 7, limits: [20, 240], extra: [1, 1, 1, 1, 1], waves: [8, 8, 0, 0] },
            { tag: "extrasystoles", id: 7, choose: "Type 2", waves: [6, 6, 2, 0] },
            { tag: "discrete", id: 103, limits: [75, 150], extra: [1, 0, 0, 0, 0], choose: "150", rate: 150, waves: [0, 15, 0, 0] },
            { tag: "fibrillation", id: 113, waves: [0, 16, 0, 0], irregular: true }, { tag: "ventricular", id: 138, waves: [0, 0, 18, 0] },
            { tag: "ratios, type I", age: "Child", id: 166, limits: [50, 65], extra: [1, 0, 1, 1, 1], choose: "4:3", rate: 60, waves: [8, 6, 0, 0], irregular: true },
            { tag: "ratios, type II", id: 169, choose: "2:1", rate: 40, waves: [8, 4, 0, 0] }, { tag: "third degree", id: 172, waves: [9, 0, 4, 0] },
            { tag: "asystole", id: 149, limits: [0, 0], pressure: 0, extra: [1, 0, 0, 0, 0], waves: [0, 0, 0, 0] },
            { tag: "standstill", id: 148, pressure: 0, waves: [8, 0, 0, 0] }, { tag: "pacer", id: 210, waves: [8, 0, 8, 16] },
            { tag: "pacer that fails", id: 211, waves: [0, 0, 6, 9], irregular: true },
        ];
    }
    function test_patient(row) {
        ["Patient", row.age || "Adult", "None"].forEach(name => click(name));
        const slider = find("Heart rate"), trace = find("trace");
        chooseRhythm(row.id);
        row.choose && click(row.choose);
        compare(slider.value, row.rate === undefined ? slider.value : row.rate);
        const waves = trace.turn.waves, at = waves.filter(wave => wave.wave === "narrow" || wave.wave === "wide").map(wave => wave.at);
        compare(["P", "narrow", "wide", "spike"].map(name => waves.filter(wave => wave.wave === name).length), row.waves);
        compare(at.some((time, i) => i > 1 && Math.abs(time - 2 * at[i - 1] + at[i - 2]) > 0.01), row.irregular === true || row.tag === "extrasystoles");
        compare(find("Systolic").value, row.pressure === undefined ? 120 : row.pressure);
        if (!row.limits)
            return;
        compare([slider.parent.least, slider.parent.most], row.limits);
        for (const end of [0, 1]) {
            clickAt(slider, end ? 0.99 : 0.01);
            compare([slider.value, trace.rate], [row.limits[end], row.limits[end]]);
        }
        compare(["None", "Type 2", "Type 3", "Type 4", "Type 6"].map(name => Number(find("extraSystoles", name).enabled)), row.extra);
    }
    function test_patientLives() {
        click("Patient");
        const trace = find("trace"), years = find("years"), moved = trace.moved;
        const systolic = find("Systolic"), diastolic = find("Diastolic");
        tryVerify(() => trace.moved > moved);
        for (const [age, expected] of [["Baby", 0], ["Child", 7], ["Adult", 30]]) {
            click(age);
            compare(years.value, expected);
        }
        years.value = 2;
        mouseClick(years, years.width - 8, years.height / 2); // 3 years
        verify(find("Child").highlighted && !find("Adult").highlighted);
        chooseRhythm(146);
        verify(find("Amplitude").visible && trace.amplitude > 0 && trace.turn.chaos);
        chooseRhythm(7);
        clickAt(diastolic, 0.55);
        compare([systolic.value, diastolic.value], [120, 120]);
        verify(find("Diastolic reading").text.includes("(asked: "));
        clickAt(systolic, 0.99);
        verify(diastolic.value > 150 && !find("Diastolic reading").text.includes("asked"));
    }
    function test_manikin() {
        SimulatedManikin.noise = 0;
        click("Manikin");
        const type = find("manikinType"), names = find("manikin");
        type.contentItem.forceActiveFocus();
        type.contentItem.selectAll();
        ["3", "1", Qt.Key_Return].forEach(key => keyClick(key));
        compare([names.displayText, find("product").text], ["Model 19", "PRODUCT_MODEL_19"]);
        names.activated(names.currentIndex = names.indexOfValue(1));
        compare(type.value, 1);
        find("types").positionViewAtBeginning();
        click("BLSService");
        keyClick(Qt.Key_Down);
        const state = find("BatteryLevelCritical");
        compare([state.text, state.hint], ["Battery level critical", "BatteryLevelCritical = 2"]);
        click("BatteryLevelCritical");
        verify(state.highlighted);
        click("Link");
        tryVerify(() => find("frames").model.some(row => row[2].text.startsWith("Model 21: Battery.BatteryLevels = 2 ")));
    }
    function counter(row, column) { return parseFloat(find("counter" + (6 * row + column)).text); }
    function test_link() {
        click("Link");
        tryVerify(() => counter(1, 2) > 0);
        click("running");
        tryVerify(() => { const last = SimulatedManikin.state().counters[2]; return counter(1, 1) === last && counter(1, 2) === last; });
        click("reset");
        compare([1, 2, 3, 4, 5].map(column => counter(1, column) + counter(2, column)), [0, 0, 0, 0, 0]);
        click("send");
        tryVerify(() => counter(1, 2) === 1 && /^Model 21: \d+ beats\/min \(message \d+\)$/.test(find("report").text));
        const frames = find("frames");
        verify(frames.model.length === 2 && frames.model[0][3].text.match(/^00( [0-9a-f]{2})+ 00$/));
        find("noise").forceActiveFocus();
        keyClick(Qt.Key_End);
        compare(SimulatedManikin.noise, 10);
        tryVerify(() => { click("send"); return counter(1, 3) > 0 && counter(2, 3) > 0 && counter(1, 4) + counter(2, 4) > 0; }, 60000);
        verify(counter(1, 5) > 0 && SimulatedManikin.state().frames.some(frame => !frame.intact && frame.changed.length > 0));
        const bad = frames.model.find(row => row[2].text === "CRC error");
        verify(bad[2].color === Theme.bad && bad[3].text.includes("<u>"));
        click("running");
    }
    function test_services() {
        click("Services");
        const status = find("account", "status"), url = find("account", "url"), detail = find("account", "detail");
        for (const [button, text, reason] of [["Fails", "Failed", "HTTP 503 Service Unavailable"], ["Answers", "Success", "after "],
                                              ["Stays silent", "Failed", "no answer in time"], ["Answers", "Success", "after "]]) {
            click(button);
            button === "Stays silent" && tryVerify(() => detail.text.startsWith("Checking since"));
            tryVerify(() => status.text === text && detail.text.includes(reason), 10000);
        }
        click("us");
        verify(url.text.includes("127.0.0.1") && url.text.includes("account.us.example.com"));
        compare(status.text, "Not checked yet");
        tryCompare(status, "text", "Success", 10000);
        click("offline"); // and nothing is sent
        compare(status.text, "Failed");
        tryVerify(() => detail.text.includes("off-line test"));
        click("staging");
        compare(url.text, "https://account.staging.example.com/api/v1/health");
        click("loopback");
        click("offline");
        tryCompare(status, "text", "Success", 10000);
    }
    function test_system() {
        click("System");
        const log = find("log"), isLogged = () => log.model.some(row => row[0].includes("sent message"));
        verify(!isLogged());
        tryVerify(() => find("Olvex.Console.Link"));
        click("Olvex.Console.Link", "level0");
        tryVerify(isLogged);
        click("pause");
        find("search").text = "SENT message";
        verify(log.model.length > 0 && log.model.every(row => row[0].includes("sent message")));
        compare(System.categories().find(category => category.name === "Olvex.AppConfig").description, "command line, directories, settings, exit");
        click("guard");
        compare(find("answer").text, "Refused: this one runs");
        window.width = 1100;
        click("store");
        const facts = find("facts").model.map(row => row.join(" "));
        verify(facts.includes("Window/page 4 4") && facts.includes("Window/width 1100 1100 px") && facts.includes("System/Environment - loopback"));
        verify(find("directories").model.some(row => row[0] === "configuration" && row[1].text === "writable"));
    }
    function contrast(one, other) {
        const linear = c => c <= 0.03928 ? c / 12.92 : Math.pow((c + 0.055) / 1.055, 2.4);
        const [a, b] = [one, other].map(c => 0.2126 * linear(c.r) + 0.7152 * linear(c.g) + 0.0722 * linear(c.b) + 0.05);
        return Math.max(a / b, b / a);
    }
    function ground(item) {
        for (; item; item = item.parent) {
            const rectangle = item.background instanceof Rectangle && item.background.visible ? item.background : item;
            if (rectangle instanceof Rectangle && rectangle.color.a === 1)
                return rectangle.color;
        }
        return Theme.window;
    }
    function isIn(item, type) { return item && (item instanceof type || isIn(item.parent, type)); }
    // The texts that lack contrast or space; one that has just come is laid out a moment later.
    function illegible(width) {
        const texts = visibleItems(window.contentItem, item => item.text && item.color && item.enabled && !(item instanceof Control));
        return texts.filter(text => contrast(text.color, ground(text)) < 4.5 || text.truncated || text.mapToItem(null, text.width, 0).x > width - Theme.gap
            || text.selectedTextColor && contrast(text.selectedTextColor, text.selectionColor) < 4.5).map(text => text.text);
    }
    function test_pages_data() {
        const looks = [{ width: 1024, height: 600, dark: true }, { width: 1280, height: 800, dark: false }, { width: 1024, height: 600, dark: false },
                       { width: 1280, height: 800, dark: true }];
        return [].concat(...window.pages.map((page, index) => looks.map(look => Object.assign({ tag: [page, look.width, look.dark].join(" "), index: index }, look))));
    }
    function test_pages(row) {
        window.width = row.width;
        window.height = row.height;
        keyClick(Qt.Key_1 + row.index, Qt.ControlModifier);
        if (Theme.dark !== row.dark)
            keyClick(Qt.Key_D, Qt.ControlModifier);
        wait(50);
        compare([System.page, Theme.dark, System.width, System.height], [row.index, row.dark, row.width, row.height]);
        tryVerify(() => illegible(row.width).length === 0, 5000, illegible(row.width).join(", "));
        ["faint", "track", "accent", "good", "bad"].forEach(control => verify(contrast(Theme[control], Theme.card) >= 4.5, control));
        ["card", "window", "accent", "button"].forEach(color => verify(contrast(Theme.focus, Theme[color]) >= 3, color));

        const boxes = controls().filter(item => !isIn(item, ListView)).map(item => item.mapToItem(null, 0, 0, item.width, item.height));
        boxes.forEach((a, i) => {
            verify(a.height >= 40 && a.x >= 0 && a.y >= 0 && a.right <= row.width && a.bottom <= row.height, "control " + i);
            for (const b of boxes.slice(i + 1))
                verify(a.right <= b.x || b.right <= a.x || a.bottom <= b.y || b.bottom <= a.y, "control " + i);
        });
        for (const list of visibleItems(window.contentItem, item => item instanceof ListView))
            compare(list.ScrollBar.vertical.visible, list.contentHeight > list.height);

        compare(setup.unnamed(window), []);
        const missed = new Set(controls());
        for (let i = 0; i < 100; ++i) {
            keyClick(Qt.Key_Tab);
            for (let item = window.activeFocusItem; item; item = item.parent) // the text of a spin box has the focus
                missed.delete(item);
        }
        compare([...missed].map(item => item.objectName), []);
    }
}
