import type { Workbench } from "../../state/workbench";
export function drawCompare(_place: HTMLElement, _workbench: Workbench): void {}
